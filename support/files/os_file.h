#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string_view>

namespace carrovan {

// The zip library's only way to the disk. One implementation per system; paths may be longer than
// the system's fixed buffers.

enum class FileStatus { kDone, kMissing, kExists, kDiskFull, kInUse, kFailed };

struct FileFacts {
  std::uint64_t sizeBytes = 0;
  std::int64_t modifiedSeconds = 0;  // since 1970, UTC
};

// An open file, closed when it is destroyed. Opening one that is open already closes it first.
class OsFile {
 public:
  OsFile() = default;
  ~OsFile() { Close(); }
  OsFile(const OsFile&) = delete;
  OsFile& operator=(const OsFile&) = delete;

  // A regular file. Anything else (a folder, a pipe, a device) is a failure and is not waited for.
  [[nodiscard]] FileStatus OpenToRead(const std::filesystem::path& path);

  // A file of nobody else's that is gone when it is closed, even by a kill.
  [[nodiscard]] FileStatus CreateNameless(const std::filesystem::path& folder);

  // A file to be written; kExists when anything of that name is there.
  [[nodiscard]] FileStatus CreateNew(const std::filesystem::path& path);

  // A file to be written, emptied if it is there; a failure while another process writes it so.
  [[nodiscard]] FileStatus CreateOrTakeOver(const std::filesystem::path& path);

  // A file that nobody else can open so until it is closed; its content stays as it is. kMissing
  // when it is not there and not to be made, kInUse while somebody else has it open so; a failure
  // also where the system has no locks.
  [[nodiscard]] FileStatus OpenAlone(const std::filesystem::path& path, bool make);

  // A file to be appended to, made when it is missing. Others may read it meanwhile.
  [[nodiscard]] FileStatus OpenToAppend(const std::filesystem::path& path);
  [[nodiscard]] FileStatus Append(std::span<const std::uint8_t> data);

  bool IsOpen() const { return handle_ != kNoHandle; }
  std::optional<FileFacts> Facts() const;

  // Reads until the buffer is full or the file ends. Nothing when the system reports an error.
  std::optional<std::size_t> ReadAt(std::uint64_t offset, std::span<std::uint8_t> buffer) const;
  [[nodiscard]] FileStatus WriteAt(std::uint64_t offset, std::span<const std::uint8_t> data);

  // Sets room aside for a new file that is about to grow to this size, so that it need not be found
  // piece by piece. A wish: where it cannot be had, writing reports. What is left over when the
  // file is written stays with it until EndAt.
  void SetRoomAside(std::uint64_t sizeBytes);
  [[nodiscard]] FileStatus EndAt(std::uint64_t sizeBytes);

  [[nodiscard]] FileStatus SetModified(std::int64_t seconds);
  [[nodiscard]] FileStatus FlushToDisk();

  // Closes the file, which lies at `from`, and gives it the name `to` in one step, in place of a
  // file that is there.
  [[nodiscard]] FileStatus CloseAs(const std::filesystem::path& from,
                                   const std::filesystem::path& to);
  void Close();

 private:
  static constexpr std::intptr_t kNoHandle = -1;

  std::intptr_t handle_ = kNoHandle;
};

// False for a file that may not be replaced: the read-only attribute, or no write permission for
// its owner where there are permissions (even for those whom they do not bind).
bool MayReplace(const std::filesystem::path& path);

bool IsFolder(const std::filesystem::path& path);
[[nodiscard]] FileStatus MakeFolder(const std::filesystem::path& path);
void RemoveFile(const std::filesystem::path& path);

// Waits until a file's content, or which names a folder holds, is where a loss of power cannot take
// it. Done also when nothing is there, and for a folder whose file system keeps its names safe
// without being asked.
[[nodiscard]] FileStatus FlushPath(const std::filesystem::path& path);

// The same for many paths, which may cost less than one after another.
[[nodiscard]] FileStatus FlushPaths(std::span<const std::filesystem::path> paths);

// Whether a path is short enough for this system. Where paths may be long, any is.
bool IsShortEnough(std::wstring_view path);

// The path that a text names.
std::filesystem::path PathFromText(std::wstring_view text);

// The path from the root on; empty when the system does not know.
std::filesystem::path AbsolutePath(const std::filesystem::path& path);

}  // namespace carrovan
