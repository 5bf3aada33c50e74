#include "platform/file_operations.h"

#include <libdeflate.h>

#include "text/path_text.h"

namespace carrovan {
void ContentSum::Add(std::string_view part) {
  // The library takes a null pointer for the beginning of another checksum.
  if (part.empty()) return;
  image_.sizeBytes += part.size();
  image_.crc32 = libdeflate_crc32(image_.crc32, part.data(), part.size());
}

FileImage ImageOfBytes(std::string_view bytes) {
  ContentSum sum;
  sum.Add(bytes);
  return sum.Image();
}

FileKind KindAt(const FileReader& files, const std::wstring& path) {
  if (files.IsLink(path)) return FileKind::kLink;
  if (files.IsFolder(path)) return FileKind::kFolder;
  return files.Exists(path) ? FileKind::kFile : FileKind::kAbsent;
}

SystemCode ReadFileImage(const FileReader& files, const std::wstring& path, FileImage& image) {
  return ReadFileImage(files, path, KindAt(files, path), image);
}

SystemCode ReadFileImage(const FileReader& files, const std::wstring& path, FileKind kind,
                         FileImage& image) {
  if (kind != FileKind::kFile) {
    image = {kind};
    return kSystemOk;
  }
  ContentSum sum;
  const SystemCode code = files.ReadInParts(path, [&sum](std::string_view part, std::uint64_t) {
    sum.Add(part);
    return true;
  });
  if (code == kSystemOk) image = sum.Image();
  return code;
}

namespace {

// A subfolder that still holds something has reported that by its own result.
bool RemoveSubfolder(FileSystem& files, const std::wstring& folder) {
  const SystemCode code = files.RemoveFolder(folder);
  return code == kSystemOk || code == kFolderNotEmpty;
}

// Removes what is no folder, and lists the folders, outer ones first.
bool WipeFiles(FileSystem& files, const std::wstring& folder, std::vector<std::wstring>& folders) {
  std::vector<FolderEntry> entries;
  bool complete = files.ReadFolder(folder, entries) == kSystemOk;
  for (const FolderEntry& entry : entries) {
    const std::wstring path = folder + L"\\" + entry.name;
    bool isGone = true;
    if (entry.isFolder && !entry.isLink) {
      folders.push_back(path);
      isGone = WipeFiles(files, path, folders);
    } else {
      isGone = entry.isFolder ? RemoveSubfolder(files, path) : files.RemoveFile(path) == kSystemOk;
    }
    complete = complete && isGone;
  }
  return complete;
}

// All files go before the first folder: who keeps them has to make sure of that only once.
bool WipeContent(FileSystem& files, const std::wstring& folder) {
  std::vector<std::wstring> folders;
  bool complete = WipeFiles(files, folder, folders);
  for (auto each = folders.rbegin(); each != folders.rend(); ++each) {
    complete = RemoveSubfolder(files, *each) && complete;
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
  files.Announce({&folder, 1}, ComingChange::kRemoval);
  if (!WipeContent(files, folder)) return false;
  // Everything below is gone; an empty folder that somebody holds open does no harm.
  static_cast<void>(files.RemoveFolder(folder));
  return true;
}

namespace {

// The list says what each entry is, so that only its size is left to be asked for.
std::uint64_t BytesInFolder(const FileReader& files, const std::wstring& folder) {
  std::uint64_t bytes = 0;
  for (const FolderEntry& entry : ListFolder(files, folder)) {
    const std::wstring path = folder + L"\\" + entry.name;
    if (entry.isLink) continue;
    bytes += entry.isFolder ? BytesInFolder(files, path) : files.FileBytes(path);
  }
  return bytes;
}

}  // namespace

std::uint64_t TreeBytes(const FileReader& files, const std::wstring& path) {
  if (files.IsLink(path)) return 0;
  return files.IsFolder(path) ? BytesInFolder(files, path) : files.FileBytes(path);
}

SystemCode MakeFolderPath(FileSystem& files, const std::wstring& folder) {
  if (files.IsFolder(folder)) return kSystemOk;
  const std::wstring parent = RemoveFileSpec(folder);
  if (parent == folder) return files.CreateFolder(WithoutTrailingBackslashes(folder));
  if (const SystemCode code = MakeFolderPath(files, parent); code != kSystemOk) return code;
  const SystemCode code = files.CreateFolder(folder);
  return code == kAlreadyExists && files.IsFolder(folder) ? kSystemOk : code;
}

}  // namespace carrovan
