#include "package/staging_folder.h"

#include "package/package_description.h"
#include "platform/file_operations.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

std::wstring MarkOf(const std::wstring& folder) { return folder + L"\\" + kRunFolderMark; }

// Once the mark is held, its owner is gone, and no other run can take the folder for itself.
void SweepIfAbandoned(FileSystem& files, const std::wstring& folder) {
  const std::wstring mark = MarkOf(folder);
  if (files.IsLink(mark) || !files.Exists(mark)) return;
  if (files.HoldFile(mark, FileHold::kTake) == kSystemOk) WipeRunFolder(files, folder);
}

}  // namespace

std::optional<std::wstring> NewRunFolderPath(const Machine& machine) {
  const auto tempPath = machine.folders->TempPath();
  const auto guid = machine.guids->NewGuid();
  if (!tempPath || !guid || guid->size() < 2) return std::nullopt;
  return *tempPath + guid->substr(1, guid->size() - 2);
}

void MarkRunFolder(FileSystem& files, const std::wstring& folder) {
  static_cast<void>(files.HoldFile(MarkOf(folder), FileHold::kMake));
}

void KeepRunFolder(FileSystem& files, const std::wstring& folder) {
  const std::wstring mark = MarkOf(folder);
  if (!files.Exists(mark) || files.RemoveFile(mark) == kSystemOk) return;
  static_cast<void>(files.MoveTo(mark, mark + L".kept"));
}

bool WipeRunFolder(FileSystem& files, const std::wstring& folder) {
  if (files.IsLink(folder) || !files.IsFolder(folder)) return WipeFolder(files, folder);
  std::vector<FolderEntry> entries;
  bool complete = files.ReadFolder(folder, entries) == kSystemOk;
  bool isMarked = false;
  for (const FolderEntry& entry : entries) {
    const bool isMark = CompareNames(entry.name, kRunFolderMark) == 0;
    isMarked = isMarked || isMark;
    if (!isMark && !ClearPath(files, folder + L"\\" + entry.name)) complete = false;
  }
  if (!complete) return false;
  if (isMarked && files.RemoveFile(MarkOf(folder)) != kSystemOk) return false;
  // An empty folder that somebody holds open does no harm.
  static_cast<void>(files.RemoveFolder(folder));
  return true;
}

bool ClearPath(FileSystem& files, const std::wstring& path) {
  if (!files.IsFolder(path)) {
    const SystemCode code = files.RemoveFile(path);
    return code == kSystemOk || code == kFileNotFound || code == kPathNotFound;
  }
  return files.IsLink(path) ? files.RemoveFolder(path) == kSystemOk : WipeFolder(files, path);
}

void SweepRunFolders(const Machine& machine) {
  const auto temp = machine.folders->TempPath();
  if (!temp) return;
  for (const FolderEntry& entry : ListFolder(*machine.files, *temp)) {
    if (!entry.isFolder || entry.isLink || !IsGuid(entry.name)) continue;
    SweepIfAbandoned(*machine.files, WithTrailingBackslash(*temp) + entry.name);
  }
}

bool CreateStagingFolder(ProductContext& context, const Machine& machine) {
  const auto folder = NewRunFolderPath(machine);
  if (!folder) return false;
  const SystemCode code = machine.files->CreateFolder(*folder);
  if (code != kSystemOk && code != kAlreadyExists) return false;
  // A folder that was there is somebody's, who may want to keep it.
  if (code == kSystemOk) MarkRunFolder(*machine.files, *folder);
  context.stagingFolder = *folder + L"\\";
  return true;
}

void DeleteStagingFolder(const ProductContext& context, const Machine& machine) {
  if (context.stagingFolder.empty()) return;
  WipeRunFolder(*machine.files, WithoutTrailingBackslashes(context.stagingFolder));
}

bool RenewStagingFolder(ProductContext& context, const Machine& machine) {
  DeleteStagingFolder(context, machine);
  if (!CreateStagingFolder(context, machine)) return false;
  context.packageDescriptionPath = context.stagingFolder + kPackageDescriptionName;
  return true;
}

}  // namespace carrovan
