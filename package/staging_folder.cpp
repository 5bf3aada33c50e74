#include "package/staging_folder.h"

#include "package/package_description.h"
#include "reset/folder_wipe.h"

namespace carrovan {

bool CreateStagingFolder(ProductContext& context, const Machine& machine) {
  const auto tempPath = machine.folders.TempPath();
  const auto guid = machine.guids.NewGuid();
  if (!tempPath || !guid || guid->size() < 2) return false;
  const std::wstring folder = *tempPath + guid->substr(1, guid->size() - 2) + L"\\";
  const SystemCode code = machine.files.CreateFolder(folder);
  if (code != kSystemOk && code != kAlreadyExists) return false;
  context.stagingFolder = folder;
  return true;
}

void DeleteStagingFolder(const ProductContext& context, const Machine& machine) {
  if (context.stagingFolder.empty()) return;
  const std::wstring folder = context.stagingFolder.substr(0, context.stagingFolder.size() - 1);
  WipeFolder(machine.files, folder);
}

bool RenewStagingFolder(ProductContext& context, const Machine& machine) {
  DeleteStagingFolder(context, machine);
  if (!CreateStagingFolder(context, machine)) return false;
  context.packageDescriptionPath = context.stagingFolder + kPackageDescriptionName;
  return true;
}

}  // namespace carrovan
