#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/file_system.h"
#include "platform/posix/path_mapper.h"
#include "support/files/os_file.h"

namespace carrovan {

// Small host files, read and written whole. Permissions are those of host_access.h.

inline constexpr std::size_t kLargestHostFile = std::size_t{256} << 20;

// kFailed also for what is no regular file and for one above the size limit. The content is filled
// only on success.
[[nodiscard]] FileStatus ReadHostFile(const std::filesystem::path& path,
                                      std::vector<std::uint8_t>& content);

// Puts a file with this content in place of the one that may be there, in one step; on failure that
// one is as it was.
[[nodiscard]] FileStatus ReplaceHostFile(const std::filesystem::path& path,
                                         std::span<const std::uint8_t> content);

// Host files behind Windows paths and error numbers. A symbolic link is what it leads to, and is
// listed as a link; one that leads nowhere is a file that cannot be opened. Removing a link leaves
// what it leads to alone.
class HostFileSystem : public FileSystem {
 public:
  explicit HostFileSystem(const PathMapper& paths) : paths_(paths) {}

  bool Exists(const std::wstring& path) const override;
  bool IsFolder(const std::wstring& path) const override;
  bool IsLink(const std::wstring& path) const override;
  bool IsReadOnly(const std::wstring& path) const override;
  SystemCode ReadFolder(const std::wstring& folder,
                        std::vector<FolderEntry>& entries) const override;
  SystemCode ReadBytes(const std::wstring& path, std::string& bytes) const override;
  SystemCode ReadInParts(const std::wstring& path, const TakePart& take) const override;
  std::uint64_t FileBytes(const std::wstring& path) const override;
  std::optional<std::uint64_t> FreeBytes(const std::wstring& folder) const override;

  SystemCode CreateFolder(const std::wstring& path) override;
  SystemCode CreateEmptyFile(const std::wstring& path) override;
  SystemCode RemoveFile(const std::wstring& path) override;
  SystemCode RemoveFolder(const std::wstring& path) override;
  SystemCode WriteBytes(const std::wstring& path, std::string_view bytes) override;
  SystemCode BeginReplacement(const std::wstring& path, std::uint64_t expectedBytes,
                              std::unique_ptr<FileReplacement>& replacement) override;
  SystemCode OpenToAppend(const std::wstring& path,
                          std::unique_ptr<FileAppender>& appender) override;
  SystemCode HoldFile(const std::wstring& path, FileHold hold) override;
  SystemCode CopyOver(const std::wstring& source, const std::wstring& target) override;
  SystemCode MoveTo(const std::wstring& source, const std::wstring& target) override;
  SystemCode Flush(std::span<const std::wstring> paths) override;

 private:
  const PathMapper& paths_;
  std::map<std::filesystem::path, OsFile> held_;
};

}  // namespace carrovan
