#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/file_system.h"

namespace carrovan {

// Files in memory, for tests that need many of them or need them to fail. Both
// slashes separate, case does not count. As on Windows, a file that is being appended to can be
// neither moved nor removed, nor can a folder above it be moved. It says neither that a name is not
// fit for a file nor that one is too long.
class MemoryFiles : public FileSystem {
 public:
  // Asked before every operation that answers with a code, with the operation's name and its
  // (source) path; anything but kSystemOk is the answer, and nothing is done.
  std::function<SystemCode(const std::string& operation, const std::wstring& path)> fault;

  std::size_t partBytes = 4096;  // of what ReadInParts gives at a time

  std::optional<std::uint64_t> freeBytes;  // as it is told; nothing runs out of it

  // A folder is listed by name, as the systems do, and not in the order in which it was filled.
  bool listsByName = false;

  std::vector<std::wstring> held;  // folded paths; those of other processes may be added

  std::vector<std::wstring> changes;  // "operation path" for each change that was made

  void Put(const std::wstring& path, const std::string& bytes);  // and its folders
  void PutFolder(const std::wstring& path);                      // and those above
  void MakeReadOnly(const std::wstring& path);
  bool Has(const std::wstring& path) const;
  std::string Bytes(const std::wstring& path) const;  // "<missing>" when there is no such file
  std::vector<std::wstring> Names(const std::wstring& folder) const;  // in code unit order

  bool Exists(const std::wstring& path) const override;
  bool IsFolder(const std::wstring& path) const override;
  bool IsLink(const std::wstring&) const override { return false; }
  bool IsReadOnly(const std::wstring& path) const override;
  SystemCode ReadFolder(const std::wstring& folder,
                        std::vector<FolderEntry>& entries) const override;
  SystemCode ReadBytes(const std::wstring& path, std::string& bytes) const override;
  SystemCode ReadInParts(const std::wstring& path, const TakePart& take) const override;
  std::uint64_t FileBytes(const std::wstring& path) const override;
  std::optional<std::uint64_t> FreeBytes(const std::wstring&) const override { return freeBytes; }
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
  std::vector<FolderEntry> EntriesOf(const std::wstring& folder) const;
  class Replacement;
  class Appender;

  struct Entry {
    std::wstring name;
    std::string bytes;
    std::size_t order = 0;
    bool isFolder = false;
    bool readOnly = false;
  };

  // Whoever has a file open has none of a copy's.
  struct OpenFiles {
    OpenFiles() = default;
    OpenFiles(const OpenFiles&) {}
    OpenFiles& operator=(const OpenFiles&) { return *this; }
    std::multiset<std::wstring> paths;  // folded
  };

  SystemCode MissingCode(const std::wstring& path) const;
  bool IsAppendedTo(const std::wstring& path) const;
  SystemCode MoveFile(const std::wstring& source, const std::wstring& target);
  SystemCode Fault(const std::string& operation, const std::wstring& path) const;
  const Entry* Find(const std::wstring& path) const;
  SystemCode MayStore(const std::wstring& path) const;
  SystemCode Store(const std::wstring& path, std::string bytes);
  SystemCode MoveFolder(const std::wstring& source, const std::wstring& target);
  SystemCode Done(const std::string& operation, const std::wstring& path);
  Entry& Add(const std::wstring& path);

  std::map<std::wstring, Entry> entries_;  // by folded path
  std::size_t made_ = 0;
  OpenFiles appendedTo_;
};

}  // namespace carrovan
