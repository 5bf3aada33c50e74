#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <set>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "support/files/os_file.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr mode_t kNewFileMode = 0666;

// For a longer write the system looks for larger pieces of free memory, which takes it longer.
constexpr std::size_t kMostWrittenAtOnce = std::size_t{256} << 10;

FileStatus StatusOfError() {
  switch (errno) {
    case ENOENT:
    case ENOTDIR:
      return FileStatus::kMissing;
    case EEXIST:
      return FileStatus::kExists;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return FileStatus::kDiskFull;
    default:
      return FileStatus::kFailed;
  }
}

FileStatus StatusOf(int result) { return result < 0 ? StatusOfError() : FileStatus::kDone; }

int Descriptor(std::intptr_t handle) { return static_cast<int>(handle); }

bool IsRegular(int descriptor) {
  struct stat facts = {};
  return fstat(descriptor, &facts) == 0 && S_ISREG(facts.st_mode);
}

// Permissions do not bind the administrator. Here they do: what is read-only is so for everybody.
bool OwnerMayWrite(const struct stat& facts) { return (facts.st_mode & S_IWUSR) != 0; }

bool TakesNewFiles(const std::filesystem::path& folder) {
  struct stat facts = {};
  return stat(folder.empty() ? "." : folder.c_str(), &facts) != 0 || OwnerMayWrite(facts);
}

// For file systems that cannot make a file without a name: there is a moment in which it has one.
int CreateUnlinked(const std::filesystem::path& folder) {
  std::string name = (folder / "carrovan-XXXXXX").string();
  const int descriptor = mkostemp(name.data(), O_CLOEXEC);
  if (descriptor >= 0) unlink(name.c_str());
  return descriptor;
}

// A file system without locks cannot say that another process has one.
bool LockForWriting(int descriptor) {
  return flock(descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

// True while the name still belongs to the open file; another process may have renamed it away.
bool IsNamed(int descriptor, const std::filesystem::path& path) {
  struct stat open = {};
  struct stat named = {};
  return fstat(descriptor, &open) == 0 && lstat(path.c_str(), &named) == 0 &&
         open.st_dev == named.st_dev && open.st_ino == named.st_ino;
}

// A file that lost its name before it was locked was somebody's until then.
FileStatus LockAlone(int descriptor, const std::filesystem::path& path) {
  if (flock(descriptor, LOCK_EX | LOCK_NB) == 0) {
    return IsNamed(descriptor, path) ? FileStatus::kDone : FileStatus::kInUse;
  }
  return errno == EWOULDBLOCK ? FileStatus::kInUse : FileStatus::kFailed;
}

}  // namespace

FileStatus OsFile::OpenToRead(const std::filesystem::path& path) {
  Close();
  // Without O_NONBLOCK a pipe would be waited for.
  handle_ = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (!IsOpen()) return StatusOfError();
  if (IsRegular(Descriptor(handle_))) return FileStatus::kDone;
  Close();
  return FileStatus::kFailed;
}

FileStatus OsFile::CreateNameless(const std::filesystem::path& folder) {
  Close();
  if (!TakesNewFiles(folder)) return FileStatus::kFailed;
  const std::filesystem::path place = folder.empty() ? "." : folder;
  handle_ = open(place.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, S_IRUSR | S_IWUSR);
  if (!IsOpen() && (errno == EOPNOTSUPP || errno == EISDIR)) handle_ = CreateUnlinked(place);
  return IsOpen() ? FileStatus::kDone : StatusOfError();
}

FileStatus OsFile::CreateNew(const std::filesystem::path& path) {
  Close();
  if (!TakesNewFiles(path.parent_path())) return FileStatus::kFailed;
  handle_ = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kNewFileMode);
  return IsOpen() ? FileStatus::kDone : StatusOfError();
}

FileStatus OsFile::CreateOrTakeOver(const std::filesystem::path& path) {
  Close();
  if (!TakesNewFiles(path.parent_path())) return FileStatus::kFailed;
  constexpr int kFlags = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  handle_ = open(path.c_str(), kFlags, kNewFileMode);
  if (!IsOpen()) return StatusOfError();
  const int file = Descriptor(handle_);
  if (IsRegular(file) && LockForWriting(file) && IsNamed(file, path) && ftruncate(file, 0) == 0) {
    return FileStatus::kDone;
  }
  Close();
  return FileStatus::kFailed;
}

FileStatus OsFile::OpenAlone(const std::filesystem::path& path, bool make) {
  Close();
  constexpr int kFlags = O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  handle_ = open(path.c_str(), make ? kFlags | O_CREAT : kFlags, kNewFileMode);
  if (!IsOpen()) return StatusOfError();
  const int file = Descriptor(handle_);
  const FileStatus status = IsRegular(file) ? LockAlone(file, path) : FileStatus::kFailed;
  if (status != FileStatus::kDone) Close();
  return status;
}

FileStatus OsFile::OpenToAppend(const std::filesystem::path& path) {
  Close();
  constexpr int kFlags = O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  handle_ = open(path.c_str(), kFlags, kNewFileMode);
  if (!IsOpen()) return StatusOfError();
  if (IsRegular(Descriptor(handle_))) return FileStatus::kDone;
  Close();
  return FileStatus::kFailed;
}

FileStatus OsFile::Append(std::span<const std::uint8_t> data) {
  while (!data.empty()) {
    const ssize_t count = write(Descriptor(handle_), data.data(), data.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return StatusOfError();
    data = data.subspan(static_cast<std::size_t>(count));
  }
  return FileStatus::kDone;
}

std::optional<FileFacts> OsFile::Facts() const {
  struct stat facts = {};
  if (fstat(Descriptor(handle_), &facts) != 0) return std::nullopt;
  return FileFacts{static_cast<std::uint64_t>(facts.st_size), facts.st_mtim.tv_sec};
}

std::optional<std::size_t> OsFile::ReadAt(std::uint64_t offset,
                                          std::span<std::uint8_t> buffer) const {
  std::size_t done = 0;
  while (done < buffer.size()) {
    const ssize_t count = pread(Descriptor(handle_), buffer.data() + done, buffer.size() - done,
                                static_cast<off_t>(offset + done));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return std::nullopt;
    if (count == 0) break;
    done += static_cast<std::size_t>(count);
  }
  return done;
}

FileStatus OsFile::WriteAt(std::uint64_t offset, std::span<const std::uint8_t> data) {
  std::size_t done = 0;
  while (done < data.size()) {
    const std::size_t part = std::min(data.size() - done, kMostWrittenAtOnce);
    const ssize_t count =
        pwrite(Descriptor(handle_), data.data() + done, part, static_cast<off_t>(offset + done));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return StatusOfError();
    done += static_cast<std::size_t>(count);
  }
  return FileStatus::kDone;
}

void OsFile::SetRoomAside(std::uint64_t sizeBytes) {
  const auto size = static_cast<off_t>(sizeBytes);
  if (fallocate(Descriptor(handle_), FALLOC_FL_KEEP_SIZE, 0, size) == 0) return;
  // A full disk may have given a part of it.
  static_cast<void>(EndAt(0));
}

FileStatus OsFile::EndAt(std::uint64_t sizeBytes) {
  return StatusOf(ftruncate(Descriptor(handle_), static_cast<off_t>(sizeBytes)));
}

FileStatus OsFile::SetModified(std::int64_t seconds) {
  std::array<timespec, 2> times = {};
  times[0].tv_nsec = UTIME_OMIT;
  times[1].tv_sec = seconds;
  return StatusOf(futimens(Descriptor(handle_), times.data()));
}

FileStatus OsFile::FlushToDisk() { return StatusOf(fsync(Descriptor(handle_))); }

FileStatus OsFile::CloseAs(const std::filesystem::path& from, const std::filesystem::path& to) {
  // A network file system may report a failed write only when a descriptor is closed. The file's
  // own stays open, and with it the lock, so that no other process takes the name over in between.
  FileStatus status = StatusOf(close(dup(Descriptor(handle_))));
  if (status == FileStatus::kDone) status = StatusOf(rename(from.c_str(), to.c_str()));
  Close();
  return status;
}

void OsFile::Close() {
  if (IsOpen()) close(Descriptor(std::exchange(handle_, kNoHandle)));
}

bool MayReplace(const std::filesystem::path& path) {
  struct stat facts = {};
  return lstat(path.c_str(), &facts) != 0 || !S_ISREG(facts.st_mode) || OwnerMayWrite(facts);
}

bool IsFolder(const std::filesystem::path& path) {
  struct stat facts = {};
  return stat(path.c_str(), &facts) == 0 && S_ISDIR(facts.st_mode);
}

FileStatus MakeFolder(const std::filesystem::path& path) {
  if (!TakesNewFiles(path.parent_path())) return FileStatus::kFailed;
  return StatusOf(mkdir(path.c_str(), 0777));
}

void RemoveFile(const std::filesystem::path& path) { unlink(path.c_str()); }

namespace {

// From so many paths on a whole file system is flushed in less time than they are.
constexpr std::size_t kManyPaths = 16;

// A pipe or a device would be waited for, and has nothing to lose.
class OpenPath {
 public:
  explicit OpenPath(const std::filesystem::path& path)
      : descriptor_(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)) {}
  ~OpenPath() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  OpenPath(const OpenPath&) = delete;
  OpenPath& operator=(const OpenPath&) = delete;

  int Get() const { return descriptor_; }

 private:
  int descriptor_;
};

bool IsMissing(int error) { return error == ENOENT || error == ENOTDIR; }

// Some file systems flush no folders, and special files are not flushed at all.
FileStatus StatusOfFlush(int result) {
  return result != 0 && errno != EINVAL && errno != EROFS ? StatusOfError() : FileStatus::kDone;
}

// One path on each of the devices.
std::vector<std::filesystem::path> OneOfEachDevice(std::span<const std::filesystem::path> paths) {
  std::vector<std::filesystem::path> chosen;
  std::set<dev_t> devices;
  for (const std::filesystem::path& path : paths) {
    struct stat facts = {};
    if (stat(path.c_str(), &facts) == 0 && devices.insert(facts.st_dev).second) {
      chosen.push_back(path);
    }
  }
  return chosen;
}

}  // namespace

FileStatus FlushPath(const std::filesystem::path& path) {
  const OpenPath file(path);
  if (file.Get() < 0) return IsMissing(errno) ? FileStatus::kDone : StatusOfError();
  return StatusOfFlush(fdatasync(file.Get()));
}

FileStatus FlushPaths(std::span<const std::filesystem::path> paths) {
  if (paths.size() < kManyPaths) {
    for (const std::filesystem::path& path : paths) {
      if (const FileStatus status = FlushPath(path); status != FileStatus::kDone) return status;
    }
    return FileStatus::kDone;
  }
  for (const std::filesystem::path& path : OneOfEachDevice(paths)) {
    const OpenPath file(path);
    if (file.Get() < 0) return StatusOfError();
    if (const FileStatus status = StatusOfFlush(syncfs(file.Get())); status != FileStatus::kDone) {
      return status;
    }
  }
  return FileStatus::kDone;
}

bool IsShortEnough(std::wstring_view path) {
  const std::string bytes = ToUtf8(path);
  if (bytes.size() >= PATH_MAX) return false;
  for (std::size_t at = 0; at < bytes.size();) {
    const std::size_t end = std::min(bytes.find_first_of("\\/", at), bytes.size());
    if (end - at > NAME_MAX) return false;
    at = end + 1;
  }
  return true;
}

std::filesystem::path PathFromText(std::wstring_view text) {
  return std::filesystem::path(ToUtf8(text));
}

std::filesystem::path AbsolutePath(const std::filesystem::path& path) {
  std::error_code error;
  return std::filesystem::absolute(path, error);
}

}  // namespace carrovan
