#include "reset/folder_wipe.h"

namespace carrovan {
namespace {

bool WipeContent(FileSystem& files, const std::wstring& folder);

// A subfolder that still holds something has reported that by its own result.
bool RemoveSubfolder(FileSystem& files, const std::wstring& folder) {
  const SystemCode code = files.RemoveFolder(folder);
  return code == kSystemOk || code == kFolderNotEmpty;
}

bool WipeEntry(FileSystem& files, const FolderEntry& entry, const std::wstring& path) {
  if (!entry.isFolder) return files.RemoveFile(path) == kSystemOk;
  const bool emptied = entry.isLink || WipeContent(files, path);
  return RemoveSubfolder(files, path) && emptied;
}

bool WipeContent(FileSystem& files, const std::wstring& folder) {
  std::vector<FolderEntry> entries;
  bool complete = files.ReadFolder(folder, entries) == kSystemOk;
  for (const FolderEntry& entry : entries) {
    if (!WipeEntry(files, entry, folder + L"\\" + entry.name)) complete = false;
  }
  return complete;
}

// A link to a file is no folder, and stays like any file.
bool RemoveLink(FileSystem& files, const std::wstring& link) {
  if (files.IsFolder(link)) return files.RemoveFolder(link) == kSystemOk;
  return !files.Exists(link) && files.RemoveFile(link) == kSystemOk;
}

}  // namespace

bool WipeFolder(FileSystem& files, const std::wstring& folder) {
  if (files.IsLink(folder)) return RemoveLink(files, folder);
  if (!files.IsFolder(folder)) return !files.Exists(folder);
  if (!WipeContent(files, folder)) return false;
  // Everything below is gone; an empty folder that somebody holds open does no harm.
  static_cast<void>(files.RemoveFolder(folder));
  return true;
}

}  // namespace carrovan
