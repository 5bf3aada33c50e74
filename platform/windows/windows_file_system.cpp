#include "platform/windows/windows_file_system.h"

#include <windows.h>

#include <algorithm>

#include "text/path_text.h"

namespace carrovan {
namespace {

bool IsMarked(const std::wstring& path) {
  return path.starts_with(L"\\\\?\\") || path.starts_with(L"\\\\.\\");
}

// The marked form is passed on to the disk as it is, so separators and dots are resolved first.
std::wstring FullPath(const std::wstring& path) {
  const DWORD capacity = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
  std::wstring full(capacity, L'\0');
  const DWORD length = GetFullPathNameW(path.c_str(), capacity, full.data(), nullptr);
  if (length == 0 || length >= capacity) return path;
  full.resize(length);
  return full;
}

}  // namespace

std::wstring SystemPath(const std::wstring& path) {
  if (path.size() <= kLongestPlainPath || IsMarked(path)) return path;
  std::wstring full = FullPath(path);
  if (IsMarked(full)) return full;
  if (full.starts_with(L"\\\\")) return L"\\\\?\\UNC" + full.substr(1);
  return L"\\\\?\\" + full;
}

namespace {

// PathFileExistsW and PathIsDirectoryW ask the same, but only of paths within the fixed buffers.
DWORD Attributes(const std::wstring& path) { return GetFileAttributesW(SystemPath(path).c_str()); }

SystemCode CodeOf(BOOL succeeded) { return succeeded != FALSE ? kSystemOk : GetLastError(); }

constexpr std::size_t kTransferBytes = std::size_t{16} << 20;

// A file that somebody appends to can be read.
FileHandle OpenToRead(const std::wstring& path) {
  return FileHandle(CreateFileW(SystemPath(path).c_str(), GENERIC_READ,
                                FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
}

SystemCode WriteAll(const FileHandle& file, std::string_view bytes) {
  while (!bytes.empty()) {
    const auto part = static_cast<DWORD>(std::min(bytes.size(), kTransferBytes));
    DWORD written = 0;
    if (WriteFile(file.Get(), bytes.data(), part, &written, nullptr) == FALSE) {
      return GetLastError();
    }
    bytes.remove_prefix(written);
  }
  return kSystemOk;
}

// A new file beside the one that it is to become.
class PartFile : public FileReplacement {
 public:
  PartFile() = default;
  ~PartFile() override {
    file_ = FileHandle();
    if (created_) DeleteFileW(path_.c_str());
  }
  PartFile(const PartFile&) = delete;
  PartFile& operator=(const PartFile&) = delete;

  SystemCode Begin(const std::wstring& target) {
    constexpr int kMostAttempts = 1000;
    target_ = target;
    const std::wstring folder = target.substr(0, target.size() - FileNameOf(target).size());
    SystemCode code = ERROR_FILE_EXISTS;
    for (int i = 0; i < kMostAttempts && code == ERROR_FILE_EXISTS; ++i) {
      path_ = SystemPath(folder + PartName(i));
      file_ = FileHandle(CreateFileW(path_.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                     FILE_ATTRIBUTE_NORMAL, nullptr));
      code = file_ ? kSystemOk : GetLastError();
    }
    created_ = code == kSystemOk;
    return code;
  }

  // What is left over is given back when the file is closed.
  void SetRoomAside(std::uint64_t bytes) {
    FILE_ALLOCATION_INFO room = {};
    room.AllocationSize.QuadPart = static_cast<LONGLONG>(bytes);
    SetFileInformationByHandle(file_.Get(), FileAllocationInfo, &room, sizeof(room));
  }

  SystemCode Append(std::string_view part) override { return WriteAll(file_, part); }

  SystemCode Complete() override {
    file_ = FileHandle();
    const BOOL moved =
        MoveFileExW(path_.c_str(), SystemPath(target_).c_str(), MOVEFILE_REPLACE_EXISTING);
    created_ = moved == FALSE;
    return CodeOf(moved);
  }

 private:
  std::wstring target_;
  std::wstring path_;
  FileHandle file_;
  bool created_ = false;
};

// Without the right to write elsewhere the system puts everything at the end.
class Appender : public FileAppender {
 public:
  explicit Appender(FileHandle file) : file_(std::move(file)) {}

  SystemCode Append(std::string_view bytes) override { return WriteAll(file_, bytes); }
  SystemCode FlushToDisk() override { return CodeOf(FlushFileBuffers(file_.Get())); }

 private:
  FileHandle file_;
};

bool IsDotEntry(const std::wstring& name) { return name == L"." || name == L".."; }

// Other reparse points are files kept in a cloud or in compressed form, which are no links. Wine
// reports a link without its kind.
bool IsLinkEntry(const WIN32_FIND_DATAW& found) {
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

bool WindowsFileSystem::IsLink(const std::wstring& path) const {
  const DWORD attributes = Attributes(path);
  if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
    return false;
  }
  WIN32_FIND_DATAW found = {};
  const FindHandle search(
      FindFirstFileW(SystemPath(WithoutTrailingBackslashes(path)).c_str(), &found));
  return search && IsLinkEntry(found);
}

bool WindowsFileSystem::IsReadOnly(const std::wstring& path) const {
  const DWORD attributes = Attributes(path);
  // A folder bears the mark for other reasons.
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0 &&
         (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

SystemCode WindowsFileSystem::ReadFolder(const std::wstring& folder,
                                         std::vector<FolderEntry>& entries) const {
  if (folder.empty()) return kPathNotFound;
  WIN32_FIND_DATAW found = {};
  const std::wstring pattern = SystemPath(WithTrailingBackslash(folder) + L"*");
  const FindHandle search(FindFirstFileW(pattern.c_str(), &found));
  if (const DWORD code = search ? kSystemOk : GetLastError(); code != kSystemOk) {
    return Exists(folder) && !IsFolder(folder) ? kNotAFolder : code;
  }
  std::vector<FolderEntry> read;
  do {
    const std::wstring name = found.cFileName;
    const bool isFolder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    if (!IsDotEntry(name)) read.push_back({name, isFolder, IsLinkEntry(found)});
  } while (FindNextFileW(search.Get(), &found) != FALSE);
  if (const DWORD code = GetLastError(); code != ERROR_NO_MORE_FILES) return code;
  entries = std::move(read);
  return kSystemOk;
}

SystemCode WindowsFileSystem::ReadInParts(const std::wstring& path, const TakePart& take) const {
  constexpr LONGLONG kMostPartBytes = 256 << 10;
  const FileHandle file = OpenToRead(path);
  LARGE_INTEGER size = {};
  if (!file || GetFileSizeEx(file.Get(), &size) == FALSE) return GetLastError();
  // A small file takes no large buffer.
  const auto partBytes = static_cast<DWORD>(std::min(kMostPartBytes, size.QuadPart + 1));
  std::string part(partBytes, '\0');
  for (;;) {
    DWORD count = 0;
    if (ReadFile(file.Get(), part.data(), partBytes, &count, nullptr) == FALSE) {
      return GetLastError();
    }
    if (count == 0) return kSystemOk;
    const auto fileBytes = static_cast<std::uint64_t>(size.QuadPart);
    if (!take(std::string_view(part).substr(0, count), fileBytes)) return kSystemOk;
  }
}

SystemCode WindowsFileSystem::ReadBytes(const std::wstring& path, std::string& bytes) const {
  const FileHandle file = OpenToRead(path);
  LARGE_INTEGER size = {};
  if (!file || GetFileSizeEx(file.Get(), &size) == FALSE) return GetLastError();
  std::string read(static_cast<std::size_t>(size.QuadPart), '\0');
  std::size_t filled = 0;
  DWORD count = 0;
  do {
    const auto part = static_cast<DWORD>(std::min(read.size() - filled, kTransferBytes));
    if (ReadFile(file.Get(), read.data() + filled, part, &count, nullptr) == FALSE) {
      return GetLastError();
    }
    filled += count;
  } while (count > 0 && filled < read.size());
  read.resize(filled);
  bytes = std::move(read);
  return kSystemOk;
}

std::uint64_t WindowsFileSystem::FileBytes(const std::wstring& path) const {
  WIN32_FILE_ATTRIBUTE_DATA facts = {};
  if (GetFileAttributesExW(SystemPath(path).c_str(), GetFileExInfoStandard, &facts) == FALSE ||
      (facts.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
    return 0;
  }
  return (std::uint64_t{facts.nFileSizeHigh} << 32) | facts.nFileSizeLow;
}

std::optional<std::uint64_t> WindowsFileSystem::FreeBytes(const std::wstring& folder) const {
  ULARGE_INTEGER available = {};
  const std::wstring path = SystemPath(WithTrailingBackslash(folder));
  if (GetDiskFreeSpaceExW(path.c_str(), &available, nullptr, nullptr) == FALSE) return std::nullopt;
  return available.QuadPart;
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
  const SystemCode code = CodeOf(DeleteFileW(SystemPath(path).c_str()));
  // A file that is held is let go of only when nobody can take it any more.
  if (code == kSystemOk) held_.erase(path);
  return code;
}

SystemCode WindowsFileSystem::RemoveFolder(const std::wstring& path) {
  return CodeOf(RemoveDirectoryW(SystemPath(path).c_str()));
}

// The file appears under its own name once everything is in it. Not every system that runs this
// program asks for the read-only mark before replacing a file.
SystemCode WindowsFileSystem::WriteBytes(const std::wstring& path, std::string_view bytes) {
  std::unique_ptr<FileReplacement> file;
  SystemCode code = BeginReplacement(path, bytes.size(), file);
  if (code == kSystemOk) code = file->Append(bytes);
  return code == kSystemOk ? file->Complete() : code;
}

SystemCode WindowsFileSystem::BeginReplacement(const std::wstring& path,
                                               std::uint64_t expectedBytes,
                                               std::unique_ptr<FileReplacement>& replacement) {
  if (IsReadOnly(path)) return kAccessDenied;
  auto file = std::make_unique<PartFile>();
  if (const SystemCode code = file->Begin(path); code != kSystemOk) return code;
  file->SetRoomAside(expectedBytes);
  replacement = std::move(file);
  return kSystemOk;
}

SystemCode WindowsFileSystem::OpenToAppend(const std::wstring& path,
                                           std::unique_ptr<FileAppender>& appender) {
  FileHandle file(CreateFileW(SystemPath(path).c_str(), FILE_APPEND_DATA, FILE_SHARE_READ, nullptr,
                              OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file) return GetLastError();
  appender = std::make_unique<Appender>(std::move(file));
  return kSystemOk;
}

SystemCode WindowsFileSystem::HoldFile(const std::wstring& path, FileHold hold) {
  FileHandle file(CreateFileW(SystemPath(path).c_str(), GENERIC_READ | GENERIC_WRITE,
                              FILE_SHARE_DELETE, nullptr,
                              hold == FileHold::kMake ? OPEN_ALWAYS : OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  if (!file) return GetLastError();
  held_.insert_or_assign(path, std::move(file));
  return kSystemOk;
}

SystemCode WindowsFileSystem::CopyOver(const std::wstring& source, const std::wstring& target) {
  return CodeOf(CopyFileW(SystemPath(source).c_str(), SystemPath(target).c_str(), FALSE));
}

SystemCode WindowsFileSystem::MoveTo(const std::wstring& source, const std::wstring& target) {
  return CodeOf(MoveFileW(SystemPath(source).c_str(), SystemPath(target).c_str()));
}

namespace {

SystemCode FlushOne(const std::wstring& path) {
  const DWORD attributes = Attributes(path);
  if (attributes == INVALID_FILE_ATTRIBUTES) return kSystemOk;
  const bool isFolder = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  const FileHandle file(CreateFileW(SystemPath(path).c_str(), GENERIC_WRITE,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  const SystemCode code =
      file && FlushFileBuffers(file.Get()) != FALSE ? kSystemOk : GetLastError();
  // A file system that keeps a journal of its names need not flush a folder, and may refuse to; and
  // what cannot be opened for writing was not written.
  return isFolder || (attributes & FILE_ATTRIBUTE_READONLY) != 0 ? kSystemOk : code;
}

}  // namespace

SystemCode WindowsFileSystem::Flush(std::span<const std::wstring> paths) {
  for (const std::wstring& path : paths) {
    if (const SystemCode code = FlushOne(path); code != kSystemOk) return code;
  }
  return kSystemOk;
}

}  // namespace carrovan
