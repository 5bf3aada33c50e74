#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "platform/file_system.h"
#include "platform/sandbox/path_mapper.h"
#include "support/zip/os_file.h"

namespace carrovan {

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
  std::vector<FolderEntry> ListFolder(const std::wstring& folder) const override;
  SystemCode ReadFolder(const std::wstring& folder,
                        std::vector<FolderEntry>& entries) const override;
  SystemCode ReadBytes(const std::wstring& path, std::string& bytes) const override;
  SystemCode ReadInParts(const std::wstring& path, const TakePart& take) const override;

  SystemCode CreateFolder(const std::wstring& path) override;
  SystemCode CreateEmptyFile(const std::wstring& path) override;
  SystemCode RemoveFile(const std::wstring& path) override;
  SystemCode RemoveFolder(const std::wstring& path) override;
  SystemCode WriteBytes(const std::wstring& path, std::string_view bytes) override;
  SystemCode BeginReplacement(const std::wstring& path, std::uint64_t expectedBytes,
                              std::unique_ptr<FileReplacement>& replacement) override;
  SystemCode AppendBytes(const std::wstring& path, std::string_view bytes) override;
  SystemCode HoldFile(const std::wstring& path, FileHold hold) override;
  SystemCode CopyOver(const std::wstring& source, const std::wstring& target) override;
  SystemCode MoveTo(const std::wstring& source, const std::wstring& target) override;

 private:
  const PathMapper& paths_;
  std::map<std::filesystem::path, OsFile> held_;
};

}  // namespace carrovan
