#include "platform/sandbox/host_file_system.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <system_error>

#include "platform/sandbox/host_access.h"
#include "platform/sandbox/host_path.h"
#include "platform/text.h"

namespace carrovan {
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
  return host && !LeadsToFolder(*host) && !OwnerMayWrite(*host);
}

std::vector<FolderEntry> HostFileSystem::ListFolder(const std::wstring& folder) const {
  std::vector<FolderEntry> entries;
  static_cast<void>(ReadFolder(folder, entries));
  return entries;
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
    read.push_back({TextFromHostName(entry->path().filename()), entry->is_directory(unknown),
                    entry->is_symlink(unknown), IsSpecial(*entry)});
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

SystemCode HostFileSystem::HoldFile(const std::wstring& path, FileHold hold) {
  const auto host = paths_.ToHost(path);
  if (!host || !paths_.MayBeMade(path)) return kInvalidName;
  if (const SystemCode code = CodeOfParent(*host); code != kSystemOk) return code;
  if (held_.contains(*host)) return kSharingViolation;
  const FileStatus status = held_[*host].OpenAlone(*host, hold == FileHold::kMake);
  if (status == FileStatus::kDone) return kSystemOk;
  held_.erase(*host);
  return status == FileStatus::kMissing ? kFileNotFound : kSharingViolation;
}

}  // namespace carrovan
