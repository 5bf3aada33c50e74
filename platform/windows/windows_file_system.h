#pragma once

#include <map>
#include <string>

#include "platform/file_system.h"
#include "platform/windows/handles.h"
#include "text/text.h"

namespace carrovan {

// Longest path that every function of the system takes as it is: a folder's path must leave room
// for a short file name within the fixed buffers.
inline constexpr std::size_t kLongestPlainPath = 247;

// The path in the form in which the system takes it: a longer one is made absolute and marked with
// "\\?\", which lifts the limit; any other is left alone.
std::wstring SystemPath(const std::wstring& path);

// The files of this Windows machine.
class WindowsFileSystem : public FileSystem {
 public:
  bool Exists(const std::wstring& path) const override;
  bool IsFolder(const std::wstring& path) const override;
  bool IsLink(const std::wstring& path) const override;
  bool IsReadOnly(const std::wstring& path) const override;
  [[nodiscard]] SystemCode ReadFolder(const std::wstring& folder,
                                      std::vector<FolderEntry>& entries) const override;
  [[nodiscard]] SystemCode ReadBytes(const std::wstring& path, std::string& bytes) const override;
  [[nodiscard]] SystemCode ReadInParts(const std::wstring& path,
                                       const TakePart& take) const override;
  std::uint64_t FileBytes(const std::wstring& path) const override;
  std::optional<std::uint64_t> FreeBytes(const std::wstring& folder) const override;

  [[nodiscard]] SystemCode CreateFolder(const std::wstring& path) override;
  [[nodiscard]] SystemCode CreateEmptyFile(const std::wstring& path) override;
  [[nodiscard]] SystemCode RemoveFile(const std::wstring& path) override;
  [[nodiscard]] SystemCode RemoveFolder(const std::wstring& path) override;
  [[nodiscard]] SystemCode WriteBytes(const std::wstring& path, std::string_view bytes) override;
  [[nodiscard]] SystemCode BeginReplacement(const std::wstring& path, std::uint64_t expectedBytes,
                                            std::unique_ptr<FileReplacement>& replacement) override;
  [[nodiscard]] SystemCode OpenToAppend(const std::wstring& path,
                                        std::unique_ptr<FileAppender>& appender) override;
  [[nodiscard]] SystemCode HoldFile(const std::wstring& path, FileHold hold) override;
  [[nodiscard]] SystemCode CopyOver(const std::wstring& source,
                                    const std::wstring& target) override;
  [[nodiscard]] SystemCode MoveTo(const std::wstring& source, const std::wstring& target) override;
  SystemCode Flush(std::span<const std::wstring> paths) override;

 private:
  std::map<std::wstring, FileHandle, NameLess> held_;
};

}  // namespace carrovan
