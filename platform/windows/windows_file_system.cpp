#include "platform/windows/windows_file_system.h"

#include "platform/path_text.h"
#include "platform/windows/handles.h"
#include "platform/windows/system_path.h"

namespace carrovan {
namespace {

// PathFileExistsW and PathIsDirectoryW ask the same, but only of paths within the fixed buffers.
DWORD Attributes(const std::wstring& path) { return GetFileAttributesW(SystemPath(path).c_str()); }

SystemCode CodeOf(BOOL succeeded) { return succeeded != FALSE ? kSystemOk : GetLastError(); }

bool IsDotEntry(const std::wstring& name) { return name == L"." || name == L".."; }

// Other reparse points are files kept in a cloud or in compressed form, which are no links. Wine
// reports a link without its kind.
bool IsLink(const WIN32_FIND_DATAW& found) {
  if ((found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return false;
  return found.dwReserved0 == 0 || IsReparseTagNameSurrogate(found.dwReserved0);
}

}  // namespace

bool WindowsFileSystem::Exists(const std::wstring& path) const {
  return Attributes(path) != INVALID_FILE_ATTRIBUTES;
}

bool WindowsFileSystem::IsFolder(const std::wstring& path) const {
  const DWORD attributes = Attributes(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::vector<FolderEntry> WindowsFileSystem::ListFolder(const std::wstring& folder) const {
  std::vector<FolderEntry> entries;
  if (folder.empty()) return entries;
  WIN32_FIND_DATAW found = {};
  const std::wstring pattern = SystemPath(WithTrailingBackslash(folder) + L"*");
  const FindHandle search(FindFirstFileW(pattern.c_str(), &found));
  if (!search) return entries;
  do {
    const std::wstring name = found.cFileName;
    const bool isFolder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    if (!IsDotEntry(name)) entries.push_back({name, isFolder, IsLink(found)});
  } while (FindNextFileW(search.Get(), &found) != FALSE);
  return entries;
}

SystemCode WindowsFileSystem::CreateFolder(const std::wstring& path) {
  return CodeOf(CreateDirectoryW(SystemPath(path).c_str(), nullptr));
}

SystemCode WindowsFileSystem::CreateEmptyFile(const std::wstring& path) {
  const FileHandle file(CreateFileW(SystemPath(path).c_str(), GENERIC_WRITE, 0, nullptr,
                                    CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  return file ? kSystemOk : GetLastError();
}

SystemCode WindowsFileSystem::RemoveFile(const std::wstring& path) {
  return CodeOf(DeleteFileW(SystemPath(path).c_str()));
}

SystemCode WindowsFileSystem::RemoveFolder(const std::wstring& path) {
  return CodeOf(RemoveDirectoryW(SystemPath(path).c_str()));
}

}  // namespace carrovan
