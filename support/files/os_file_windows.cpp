#include <windows.h>

#include <algorithm>
#include <bit>
#include <string>
#include <utility>

#include "support/files/os_file.h"

namespace carrovan {
namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr std::int64_t kTicksPerSecond = 10'000'000;  // of 100 nanoseconds
constexpr std::int64_t kSecondsFrom1601To1970 = 11'644'473'600;

FileStatus StatusOfError() {
  switch (GetLastError()) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
    case ERROR_BAD_NETPATH:
      return FileStatus::kMissing;
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
      return FileStatus::kExists;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
    case ERROR_FILE_TOO_LARGE:
      return FileStatus::kDiskFull;
    default:
      return FileStatus::kFailed;
  }
}

FileStatus StatusOf(BOOL succeeded) { return succeeded ? FileStatus::kDone : StatusOfError(); }

HANDLE Handle(std::intptr_t handle) { return std::bit_cast<HANDLE>(handle); }

std::wstring FullPath(const std::filesystem::path& path) {
  std::wstring full(MAX_PATH, L'\0');
  for (;;) {
    const DWORD size = static_cast<DWORD>(full.size());
    const DWORD length = GetFullPathNameW(path.c_str(), size, full.data(), nullptr);
    full.resize(length);
    if (length < size) return full;
  }
}

// The form in which a path may be longer than MAX_PATH.
std::wstring LongForm(const std::filesystem::path& path) {
  std::wstring full = FullPath(path);
  if (full.starts_with(LR"(\\?\)") || full.starts_with(LR"(\\.\)")) return full;
  if (full.starts_with(LR"(\\)")) return LR"(\\?\UNC\)" + full.substr(2);
  return LR"(\\?\)" + full;
}

std::intptr_t OpenHandle(const std::filesystem::path& path, DWORD access, DWORD share,
                         DWORD disposition, DWORD flags) {
  return std::bit_cast<std::intptr_t>(
      CreateFileW(LongForm(path).c_str(), access, share, nullptr, disposition, flags, nullptr));
}

OVERLAPPED AtOffset(std::uint64_t offset) {
  OVERLAPPED place = {};
  place.Offset = static_cast<DWORD>(offset);
  place.OffsetHigh = static_cast<DWORD>(offset >> 32);
  return place;
}

DWORD PieceOf(std::size_t sizeBytes) {
  constexpr std::size_t kLargestPiece = std::size_t{1} << 30;
  return static_cast<DWORD>(std::min(sizeBytes, kLargestPiece));
}

bool HasAttribute(const std::filesystem::path& path, DWORD attribute) {
  const DWORD attributes = GetFileAttributesW(LongForm(path).c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & attribute) != 0;
}

}  // namespace

FileStatus OsFile::OpenToRead(const std::filesystem::path& path) {
  Close();
  handle_ = OpenHandle(path, GENERIC_READ, kShareAll, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN);
  if (!IsOpen()) return StatusOfError();
  if (GetFileType(Handle(handle_)) == FILE_TYPE_DISK) return FileStatus::kDone;
  Close();
  return FileStatus::kFailed;
}

FileStatus OsFile::CreateNameless(const std::filesystem::path& folder) {
  Close();
  constexpr int kMostAttempts = 1000;
  const std::wstring prefix = L"~carrovan" + std::to_wstring(GetCurrentProcessId()) + L"-";
  for (int i = 0; i < kMostAttempts; ++i) {
    handle_ = OpenHandle(folder / (prefix + std::to_wstring(i) + L".tmp"),
                         GENERIC_READ | GENERIC_WRITE | DELETE, 0, CREATE_NEW,
                         FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE);
    if (IsOpen()) return FileStatus::kDone;
    const FileStatus status = StatusOfError();
    if (status != FileStatus::kExists) return status;
  }
  return FileStatus::kExists;
}

FileStatus OsFile::CreateNew(const std::filesystem::path& path) {
  Close();
  handle_ = OpenHandle(path, GENERIC_READ | GENERIC_WRITE, 0, CREATE_NEW, FILE_ATTRIBUTE_NORMAL);
  return StatusOf(IsOpen());
}

FileStatus OsFile::CreateOrTakeOver(const std::filesystem::path& path) {
  Close();
  handle_ = OpenHandle(path, GENERIC_READ | GENERIC_WRITE, 0, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL);
  return StatusOf(IsOpen());
}

FileStatus OsFile::OpenAlone(const std::filesystem::path& path, bool make) {
  Close();
  // Who wants to write it too is kept out.
  handle_ = OpenHandle(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE,
                       make ? OPEN_ALWAYS : OPEN_EXISTING,
                       FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT);
  if (!IsOpen() && GetLastError() == ERROR_SHARING_VIOLATION) return FileStatus::kInUse;
  return StatusOf(IsOpen());
}

FileStatus OsFile::OpenToAppend(const std::filesystem::path& path) {
  Close();
  handle_ = OpenHandle(path, FILE_APPEND_DATA, FILE_SHARE_READ, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL);
  if (!IsOpen() && GetLastError() == ERROR_SHARING_VIOLATION) return FileStatus::kInUse;
  return StatusOf(IsOpen());
}

FileStatus OsFile::Append(std::span<const std::uint8_t> data) {
  while (!data.empty()) {
    DWORD count = 0;
    if (!WriteFile(Handle(handle_), data.data(), PieceOf(data.size()), &count, nullptr)) {
      return StatusOfError();
    }
    data = data.subspan(count);
  }
  return FileStatus::kDone;
}

std::optional<FileFacts> OsFile::Facts() const {
  BY_HANDLE_FILE_INFORMATION facts = {};
  if (!GetFileInformationByHandle(Handle(handle_), &facts)) return std::nullopt;
  const auto wide = [](DWORD high, DWORD low) { return (std::uint64_t{high} << 32) | low; };
  const FILETIME& modified = facts.ftLastWriteTime;
  const auto ticks =
      static_cast<std::int64_t>(wide(modified.dwHighDateTime, modified.dwLowDateTime));
  return FileFacts{wide(facts.nFileSizeHigh, facts.nFileSizeLow),
                   ticks / kTicksPerSecond - kSecondsFrom1601To1970};
}

std::optional<std::size_t> OsFile::ReadAt(std::uint64_t offset,
                                          std::span<std::uint8_t> buffer) const {
  std::size_t done = 0;
  while (done < buffer.size()) {
    OVERLAPPED place = AtOffset(offset + done);
    DWORD count = 0;
    if (!ReadFile(Handle(handle_), buffer.data() + done, PieceOf(buffer.size() - done), &count,
                  &place)) {
      if (GetLastError() == ERROR_HANDLE_EOF) break;
      return std::nullopt;
    }
    if (count == 0) break;
    done += count;
  }
  return done;
}

FileStatus OsFile::WriteAt(std::uint64_t offset, std::span<const std::uint8_t> data) {
  std::size_t done = 0;
  while (done < data.size()) {
    OVERLAPPED place = AtOffset(offset + done);
    DWORD count = 0;
    if (!WriteFile(Handle(handle_), data.data() + done, PieceOf(data.size() - done), &count,
                   &place)) {
      return StatusOfError();
    }
    done += count;
  }
  return FileStatus::kDone;
}

void OsFile::SetRoomAside(std::uint64_t sizeBytes) {
  FILE_ALLOCATION_INFO room = {};
  room.AllocationSize.QuadPart = static_cast<LONGLONG>(sizeBytes);
  SetFileInformationByHandle(Handle(handle_), FileAllocationInfo, &room, sizeof(room));
}

FileStatus OsFile::EndAt(std::uint64_t sizeBytes) {
  LARGE_INTEGER end = {};
  end.QuadPart = static_cast<LONGLONG>(sizeBytes);
  return StatusOf(SetFilePointerEx(Handle(handle_), end, nullptr, FILE_BEGIN) &&
                  SetEndOfFile(Handle(handle_)));
}

FileStatus OsFile::SetModified(std::int64_t seconds) {
  const auto ticks =
      static_cast<std::uint64_t>((seconds + kSecondsFrom1601To1970) * kTicksPerSecond);
  const FILETIME modified = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
  return StatusOf(SetFileTime(Handle(handle_), nullptr, nullptr, &modified));
}

FileStatus OsFile::FlushToDisk() { return StatusOf(FlushFileBuffers(Handle(handle_))); }

FileStatus OsFile::CloseAs(const std::filesystem::path& from, const std::filesystem::path& to) {
  // A file that is open without sharing cannot be renamed.
  Close();
  return StatusOf(
      MoveFileExW(LongForm(from).c_str(), LongForm(to).c_str(), MOVEFILE_REPLACE_EXISTING));
}

void OsFile::Close() {
  if (IsOpen()) CloseHandle(Handle(std::exchange(handle_, kNoHandle)));
}

bool MayReplace(const std::filesystem::path& path) {
  return !HasAttribute(path, FILE_ATTRIBUTE_READONLY) || IsFolder(path);
}

bool IsFolder(const std::filesystem::path& path) {
  return HasAttribute(path, FILE_ATTRIBUTE_DIRECTORY);
}

FileStatus MakeFolder(const std::filesystem::path& path) {
  return StatusOf(CreateDirectoryW(LongForm(path).c_str(), nullptr));
}

void RemoveFile(const std::filesystem::path& path) { DeleteFileW(LongForm(path).c_str()); }

FileStatus FlushPath(const std::filesystem::path& path) {
  const bool isFolder = IsFolder(path);
  const HANDLE file =
      Handle(OpenHandle(path, GENERIC_WRITE, kShareAll, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS));
  if (file == INVALID_HANDLE_VALUE) {
    const FileStatus status = StatusOfError();
    // Who may not change a folder's names cannot have left any of them unwritten.
    return status == FileStatus::kMissing || isFolder ? FileStatus::kDone : status;
  }
  const BOOL flushed = FlushFileBuffers(file);
  const FileStatus status = StatusOf(flushed);
  CloseHandle(file);
  // A file system that keeps a journal of its names need not flush a folder.
  return isFolder ? FileStatus::kDone : status;
}

FileStatus FlushPaths(std::span<const std::filesystem::path> paths) {
  for (const std::filesystem::path& path : paths) {
    if (const FileStatus status = FlushPath(path); status != FileStatus::kDone) return status;
  }
  return FileStatus::kDone;
}

bool IsShortEnough(std::wstring_view) { return true; }

std::filesystem::path PathFromText(std::wstring_view text) { return text; }

// The C++ library takes the long form of a path for a relative one.
std::filesystem::path AbsolutePath(const std::filesystem::path& path) { return FullPath(path); }

}  // namespace carrovan
