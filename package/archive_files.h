#pragma once

#include <cstddef>
#include <map>
#include <string>

#include "platform/archive_library.h"
#include "platform/file_system.h"
#include "platform/text.h"

namespace carrovan {

// The items of an archive as files, for what reads files and shall read a package without unpacking
// it. A path is an item's stored name, with backslashes and without a root; an empty path is the
// archive's own folder. Of items of one name the first counts. Nothing can be changed.
class ArchiveFiles : public FileSystem {
 public:
  // Longer items are not read: whoever reads a file whole would have to hold it.
  static constexpr std::size_t kLongestFileBytes = std::size_t{64} << 20;

  explicit ArchiveFiles(ArchiveExaminer& archive);

  bool Exists(const std::wstring& path) const override;
  // True also for a folder that is only a part of other names.
  bool IsFolder(const std::wstring& path) const override;
  bool IsLink(const std::wstring&) const override { return false; }
  bool IsReadOnly(const std::wstring& path) const override { return Exists(path); }
  std::vector<FolderEntry> ListFolder(const std::wstring& folder) const override;
  SystemCode ReadFolder(const std::wstring& folder,
                        std::vector<FolderEntry>& entries) const override;
  // kInvalidData for an item that is damaged, encrypted or too long.
  SystemCode ReadBytes(const std::wstring& path, std::string& bytes) const override;
  SystemCode ReadInParts(const std::wstring& path, const TakePart& take) const override;

  // kAccessDenied, always.
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
  ArchiveExaminer& archive_;
  std::map<std::wstring, std::size_t, NameLess> indexes_;  // by stored name
};

}  // namespace carrovan
