#include "package/staging_folder.h"

#include "package/package_description.h"
#include "package/run_folder.h"
#include "platform/path_text.h"

namespace carrovan {

bool CreateStagingFolder(ProductContext& context, const Machine& machine) {
  const auto tempPath = machine.folders.TempPath();
  const auto guid = machine.guids.NewGuid();
  if (!tempPath || !guid || guid->size() < 2) return false;
  const std::wstring folder = *tempPath + guid->substr(1, guid->size() - 2) + L"\\";
  const SystemCode code = machine.files.CreateFolder(folder);
  if (code != kSystemOk && code != kAlreadyExists) return false;
  // A folder that was there is somebody's, who may want to keep it.
  if (code == kSystemOk) MarkRunFolder(machine.files, WithoutTrailingBackslashes(folder));
  context.stagingFolder = folder;
  return true;
}

void DeleteStagingFolder(const ProductContext& context, const Machine& machine) {
  if (context.stagingFolder.empty()) return;
  WipeRunFolder(machine.files, WithoutTrailingBackslashes(context.stagingFolder));
}

bool RenewStagingFolder(ProductContext& context, const Machine& machine) {
  DeleteStagingFolder(context, machine);
  if (!CreateStagingFolder(context, machine)) return false;
  context.packageDescriptionPath = context.stagingFolder + kPackageDescriptionName;
  return true;
}

}  // namespace carrovan
