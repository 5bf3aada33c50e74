#include "platform/posix/host_file_system.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <span>
#include <system_error>

#include "platform/posix/host_access.h"
#include "support/files/part_file.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {

FileStatus ReadHostFile(const std::filesystem::path& path, std::vector<std::uint8_t>& content) {
  OsFile file;
  if (!OwnerMayRead(path)) return FileStatus::kFailed;
  if (const FileStatus status = file.OpenToRead(path); status != FileStatus::kDone) return status;
  const auto facts = file.Facts();
  if (!facts || facts->sizeBytes > kLargestHostFile) return FileStatus::kFailed;
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(facts->sizeBytes));
  const auto count = file.ReadAt(0, bytes);
  if (!count) return FileStatus::kFailed;
  bytes.resize(*count);
  content = std::move(bytes);
  return FileStatus::kDone;
}

FileStatus ReplaceHostFile(const std::filesystem::path& path,
                           std::span<const std::uint8_t> content) {
  if (!MayPutFile(path)) return FileStatus::kFailed;
  PartFile part;
  FileStatus status = part.CreateForItem(path);
  if (status == FileStatus::kDone) status = part.File().WriteAt(0, content);
  if (status == FileStatus::kDone) status = part.File().FlushToDisk();
  if (status == FileStatus::kDone) status = part.Complete();
  return status;
}

namespace {

namespace fs = std::filesystem;

// What lies at a path itself, not where a link leads.
fs::file_status StatusAt(const fs::path& path) {
  std::error_code error;
  return fs::symlink_status(path, error);
}

SystemCode Remove(const fs::path& path) {
  if (const SystemCode code = CodeOfParent(path); code != kSystemOk) return code;
  std::error_code error;
  fs::remove(path, error);
  return SystemCodeOf(error);
}

SystemCode RemoveFileAt(const fs::path& path) {
  const fs::file_status status = StatusAt(path);
  switch (status.type()) {
    case fs::file_type::not_found:
      return MissingCode(path);
    case fs::file_type::directory:
      return kAccessDenied;
    case fs::file_type::symlink:
      return LeadsToFolder(path) ? kAccessDenied : Remove(path);
    default:
      return OwnerMayWrite(status) ? Remove(path) : kAccessDenied;
  }
}

SystemCode OpenEmptied(const fs::path& path) {
  errno = 0;
  const std::ofstream file(path, std::ios::binary | std::ios::trunc);
  if (file) return kSystemOk;
  const SystemCode code = SystemCodeOf(std::error_code(errno, std::generic_category()));
  return code == kSystemOk ? kGeneralFailure : code;
}

bool IsSpecial(const fs::directory_entry& entry) {
  std::error_code error;
  // Known from the listing for most entries.
  if (entry.is_regular_file(error) || entry.is_directory(error)) return false;
  const fs::file_status status = entry.status(error);
  return fs::exists(status) && !fs::is_directory(status) && !fs::is_regular_file(status);
}

bool ListedBefore(const FolderEntry& a, const FolderEntry& b) {
  const int order = CompareNames(a.name, b.name);
  return order != 0 ? order < 0 : a.name < b.name;
}

}  // namespace

bool HostFileSystem::Exists(const std::wstring& path) const {
  const auto host = paths_.ToHost(path);
  std::error_code error;
  return host && fs::exists(*host, error);
}

bool HostFileSystem::IsFolder(const std::wstring& path) const {
  const auto host = paths_.ToHost(path);
  return host && LeadsToFolder(*host);
}

bool HostFileSystem::IsLink(const std::wstring& path) const {
  const auto host = paths_.ToHost(path);
  return host && fs::is_symlink(StatusAt(*host));
}

bool HostFileSystem::IsReadOnly(const std::wstring& path) const {
  const auto host = paths_.ToHost(path);
  if (!host) return false;
  std::error_code error;
  const fs::file_status status = fs::status(*host, error);
  return !fs::is_directory(status) && !OwnerMayWrite(status);
}

SystemCode HostFileSystem::ReadFolder(const std::wstring& folder,
                                      std::vector<FolderEntry>& entries) const {
  const auto host = paths_.ToHost(folder);
  if (!host) return kInvalidName;
  if (!LeadsToFolder(*host)) return fs::exists(StatusAt(*host)) ? kNotAFolder : kPathNotFound;
  if (!OwnerMayRead(*host)) return kAccessDenied;
  std::vector<FolderEntry> read;
  std::error_code error;
  for (fs::directory_iterator entry(*host, error), end; !error && entry != end;
       entry.increment(error)) {
    std::error_code unknown;  // of an entry that has gone or leads nowhere
    read.push_back({TextFromHostName(entry->path().filename().native()),
                    entry->is_directory(unknown), entry->is_symlink(unknown), IsSpecial(*entry)});
  }
  if (error) return SystemCodeOf(error);
  std::sort(read.begin(), read.end(), ListedBefore);
  entries = std::move(read);
  return kSystemOk;
}

SystemCode HostFileSystem::CreateFolder(const std::wstring& path) {
  const auto host = paths_.ToHost(path);
  if (!host || !paths_.MayBeMade(path)) return kInvalidName;
  if (fs::exists(StatusAt(*host))) return kAlreadyExists;
  if (const SystemCode code = CodeOfParent(*host); code != kSystemOk) return code;
  std::error_code error;
  fs::create_directory(*host, error);
  return SystemCodeOf(error);
}

SystemCode HostFileSystem::CreateEmptyFile(const std::wstring& path) {
  const auto host = paths_.ToHost(path);
  if (!host || !paths_.MayBeMade(path)) return kInvalidName;
  std::error_code error;
  const fs::file_status there = fs::status(*host, error);
  // Opening a pipe or a device would wait for somebody at its other end.
  if (fs::exists(there) && !fs::is_regular_file(there)) return kAccessDenied;
  if (fs::exists(there)) return OwnerMayWrite(*host) ? OpenEmptied(*host) : kAccessDenied;
  if (const SystemCode code = CodeOfParent(*host); code != kSystemOk) return code;
  return OpenEmptied(*host);
}

SystemCode HostFileSystem::RemoveFile(const std::wstring& path) {
  const auto host = paths_.ToHost(path);
  if (!host) return kInvalidName;
  const SystemCode code = RemoveFileAt(*host);
  // A file that is held is let go of only when nobody can take it any more.
  if (code == kSystemOk) held_.erase(*host);
  return code;
}

SystemCode HostFileSystem::RemoveFolder(const std::wstring& path) {
  const auto host = paths_.ToHost(path);
  if (!host) return kInvalidName;
  const fs::file_type type = StatusAt(*host).type();
  if (type == fs::file_type::not_found) return MissingCode(*host);
  if (!LeadsToFolder(*host)) return kNotAFolder;
  if (type != fs::file_type::symlink && !OwnerMayWrite(*host)) return kAccessDenied;
  return Remove(*host);
}

namespace {

namespace fs = std::filesystem;

SystemCode CodeOf(FileStatus status) {
  switch (status) {
    case FileStatus::kDone:
      return kSystemOk;
    case FileStatus::kMissing:
      return kFileNotFound;
    case FileStatus::kExists:
      return kAlreadyExists;
    case FileStatus::kDiskFull:
      return kSystemDiskFull;
    case FileStatus::kInUse:
      return kSharingViolation;
    default:
      return kAccessDenied;
  }
}

std::uint8_t* AsBytes(char* text) { return static_cast<std::uint8_t*>(static_cast<void*>(text)); }

const std::uint8_t* AsBytes(const char* text) {
  return static_cast<const std::uint8_t*>(static_cast<const void*>(text));
}

constexpr std::size_t kPartBytes = std::size_t{256} << 10;

SystemCode OpenToRead(const fs::path& path, OsFile& file) {
  if (!OwnerMayRead(path)) return kAccessDenied;
  const FileStatus status = file.OpenToRead(path);
  return status == FileStatus::kMissing ? MissingCode(path) : CodeOf(status);
}

SystemCode ReadParts(const OsFile& file, const FileReader::TakePart& take) {
  const auto facts = file.Facts();
  if (!facts) return kGeneralFailure;
  // A small file takes no large buffer; one byte more shows that it ends there.
  const std::uint64_t wholeBytes = facts->sizeBytes + 1;
  std::string part(static_cast<std::size_t>(std::min<std::uint64_t>(kPartBytes, wholeBytes)), '\0');
  for (std::uint64_t offset = 0;;) {
    const auto count = file.ReadAt(offset, {AsBytes(part.data()), part.size()});
    if (!count) return kGeneralFailure;
    if (*count == 0) return kSystemOk;
    if (!take(std::string_view(part).substr(0, *count), facts->sizeBytes)) return kSystemOk;
    if (*count < part.size()) return kSystemOk;
    offset += *count;
  }
}

SystemCode ReadWhole(const fs::path& path, std::string& bytes) {
  OsFile file;
  if (const SystemCode code = OpenToRead(path, file); code != kSystemOk) return code;
  const auto facts = file.Facts();
  if (!facts) return kGeneralFailure;
  std::string read(static_cast<std::size_t>(facts->sizeBytes), '\0');
  const auto count = file.ReadAt(0, {AsBytes(read.data()), read.size()});
  if (!count) return kGeneralFailure;
  read.resize(*count);
  bytes = std::move(read);
  return kSystemOk;
}

// Complete or not at all: the file appears under its own name once everything is in it.
class HostReplacement : public FileReplacement {
 public:
  SystemCode Begin(const fs::path& path) {
    if (const SystemCode code = CodeOfParent(path); code != kSystemOk) return code;
    return OwnerMayWrite(path) ? CodeOf(part_.CreateForItem(path)) : kAccessDenied;
  }

  void SetRoomAside(std::uint64_t bytes) {
    part_.File().SetRoomAside(bytes);
    roomBytes_ = bytes;
  }

  SystemCode Append(std::string_view part) override {
    const FileStatus status = part_.File().WriteAt(size_, {AsBytes(part.data()), part.size()});
    size_ += part.size();
    return CodeOf(status);
  }

  SystemCode Complete() override {
    const bool hasRoomLeft = size_ < roomBytes_;
    const FileStatus status = hasRoomLeft ? part_.File().EndAt(size_) : FileStatus::kDone;
    return CodeOf(status == FileStatus::kDone ? part_.Complete() : status);
  }

 private:
  PartFile part_;
  std::uint64_t size_ = 0;
  std::uint64_t roomBytes_ = 0;
};

SystemCode ReplaceWhole(const fs::path& path, std::string_view bytes) {
  HostReplacement replacement;
  SystemCode code = replacement.Begin(path);
  if (code == kSystemOk) code = replacement.Append(bytes);
  return code == kSystemOk ? replacement.Complete() : code;
}

class HostAppender : public FileAppender {
 public:
  SystemCode Open(const fs::path& path) {
    std::error_code error;
    const fs::file_status there = fs::status(path, error);
    if (fs::exists(there) && !(fs::is_regular_file(there) && OwnerMayWrite(there))) {
      return kAccessDenied;
    }
    if (!fs::exists(there)) {
      if (const SystemCode code = CodeOfParent(path); code != kSystemOk) return code;
    }
    return CodeOf(file_.OpenToAppend(path));
  }

  SystemCode Append(std::string_view bytes) override {
    return CodeOf(file_.Append({AsBytes(bytes.data()), bytes.size()}));
  }

  SystemCode FlushToDisk() override { return CodeOf(file_.FlushToDisk()); }

 private:
  OsFile file_;
};

}  // namespace

SystemCode HostFileSystem::HoldFile(const std::wstring& path, FileHold hold) {
  const auto host = paths_.ToHost(path);
  if (!host || !paths_.MayBeMade(path)) return kInvalidName;
  if (const SystemCode code = CodeOfParent(*host); code != kSystemOk) return code;
  if (held_.contains(*host)) return kSharingViolation;
  const FileStatus status = held_[*host].OpenAlone(*host, hold == FileHold::kMake);
  if (status == FileStatus::kDone) return kSystemOk;
  held_.erase(*host);
  return CodeOf(status);
}

SystemCode HostFileSystem::ReadBytes(const std::wstring& path, std::string& bytes) const {
  const auto host = paths_.ToHost(path);
  return host ? ReadWhole(*host, bytes) : kInvalidName;
}

SystemCode HostFileSystem::ReadInParts(const std::wstring& path, const TakePart& take) const {
  const auto host = paths_.ToHost(path);
  if (!host) return kInvalidName;
  OsFile file;
  const SystemCode code = OpenToRead(*host, file);
  return code == kSystemOk ? ReadParts(file, take) : code;
}

std::uint64_t HostFileSystem::FileBytes(const std::wstring& path) const {
  const auto host = paths_.ToHost(path);
  std::error_code error;
  const std::uintmax_t size = host ? fs::file_size(*host, error) : 0;
  return error ? 0 : size;
}

std::optional<std::uint64_t> HostFileSystem::FreeBytes(const std::wstring& folder) const {
  const auto host = paths_.ToHost(folder);
  if (!host) return std::nullopt;
  std::error_code error;
  const fs::space_info space = fs::space(*host, error);
  return error ? std::nullopt : std::optional<std::uint64_t>(space.available);
}

SystemCode HostFileSystem::WriteBytes(const std::wstring& path, std::string_view bytes) {
  const auto host = paths_.ToHost(path);
  return host && paths_.MayBeMade(path) ? ReplaceWhole(*host, bytes) : kInvalidName;
}

SystemCode HostFileSystem::BeginReplacement(const std::wstring& path, std::uint64_t expectedBytes,
                                            std::unique_ptr<FileReplacement>& replacement) {
  const auto host = paths_.ToHost(path);
  if (!host || !paths_.MayBeMade(path)) return kInvalidName;
  auto begun = std::make_unique<HostReplacement>();
  if (const SystemCode code = begun->Begin(*host); code != kSystemOk) return code;
  begun->SetRoomAside(expectedBytes);
  replacement = std::move(begun);
  return kSystemOk;
}

SystemCode HostFileSystem::OpenToAppend(const std::wstring& path,
                                        std::unique_ptr<FileAppender>& appender) {
  const auto host = paths_.ToHost(path);
  if (!host || !paths_.MayBeMade(path)) return kInvalidName;
  auto opened = std::make_unique<HostAppender>();
  const SystemCode code = opened->Open(*host);
  if (code == kSystemOk) appender = std::move(opened);
  return code;
}

SystemCode HostFileSystem::CopyOver(const std::wstring& source, const std::wstring& target) {
  const auto from = paths_.ToHost(source);
  if (!from) return kInvalidName;
  OsFile file;
  if (const SystemCode code = OpenToRead(*from, file); code != kSystemOk) return code;
  const auto to = paths_.ToHost(target);
  if (!to || !paths_.MayBeMade(target)) return kInvalidName;
  HostReplacement copy;
  SystemCode written = copy.Begin(*to);
  if (written != kSystemOk) return written;
  const SystemCode read = ReadParts(file, [&](std::string_view part, std::uint64_t) {
    written = copy.Append(part);
    return written == kSystemOk;
  });
  if (read != kSystemOk) return read;
  return written == kSystemOk ? copy.Complete() : written;
}

SystemCode HostFileSystem::Flush(std::span<const std::wstring> paths) {
  std::vector<fs::path> hosts;
  for (const std::wstring& path : paths) {
    if (auto host = paths_.ToHost(path)) hosts.push_back(std::move(*host));
  }
  return CodeOf(FlushPaths(hosts));
}

namespace {

// One file or folder in two spellings, on a host that takes names in any case.
bool IsOneInTwoSpellings(const fs::path& a, const fs::path& b) {
  std::error_code error;
  return CompareNames(TextFromHostName(a.native()), TextFromHostName(b.native())) == 0 &&
         fs::equivalent(a, b, error);
}

}  // namespace

SystemCode HostFileSystem::MoveTo(const std::wstring& source, const std::wstring& target) {
  const auto from = paths_.ToHost(source);
  const auto to = paths_.ToHost(target);
  if (!from || !to || !paths_.MayBeMade(target)) return kInvalidName;
  std::error_code error;
  if (!fs::exists(fs::symlink_status(*from, error))) return MissingCode(*from);
  const bool isRespelled = *from == *to || IsOneInTwoSpellings(*from, *to);
  if (!isRespelled && fs::exists(fs::symlink_status(*to, error))) return kAlreadyExists;
  if (const SystemCode code = CodeOfParent(*to); code != kSystemOk) return code;
  if (!OwnerMayWrite(from->parent_path())) return kAccessDenied;
  const fs::path name = HostPathFromText(FileNameOf(WithoutTrailingBackslashes(target)));
  fs::rename(*from, isRespelled ? from->parent_path() / name : *to, error);
  return SystemCodeOf(error);
}

}  // namespace carrovan
