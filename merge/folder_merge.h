#pragma once

#include <exception>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/console.h"
#include "platform/file_system.h"
#include "platform/system_code.h"
#include "platform/xml_dom.h"

namespace carrovan {

// A file operation that failed and ends the run it belongs to, leaving files as they are then.
class FileSystemError : public std::exception {
 public:
  FileSystemError(SystemCode code, std::wstring path) : code_(code), path_(std::move(path)) {}

  const char* what() const noexcept override { return "a file operation failed"; }
  SystemCode Code() const { return code_; }
  const std::wstring& Path() const { return path_; }

  // One line for a person: the path and the system's reason with its number.
  std::wstring Description() const { return path_ + L": " + DescribeSystemCode(code_); }

 private:
  SystemCode code_;
  std::wstring path_;
};

// The order of 16-bit units; case counts.
struct UnitOrder {
  bool operator()(const std::wstring& a, const std::wstring& b) const;
};

using FileNameSet = std::set<std::wstring, UnitOrder>;

// True for a file whose extension is exactly ".xml"; ".xml" alone is a name without an extension.
bool IsXmlFile(const FolderEntry& entry);

// The names of the XML files directly in a folder; none when it is no folder. Throws
// FileSystemError when the folder cannot be read.
FileNameSet ListXmlFileNames(const FileReader& files, const std::wstring& folder);

// The entries of a folder in the system's order. Throws FileSystemError.
std::vector<FolderEntry> EntriesOf(const FileReader& files, const std::wstring& folder);

// The path of a name in a folder, with one separator between them.
std::wstring JoinPath(const std::wstring& folder, const std::wstring& name);

struct FolderMergePorts {
  FileSystem& files;
  XmlDom& dom;
  LineLog& log;
  std::vector<std::wstring>* merged = nullptr;  // gets the names of the merged files
};

// Brings the XML files of an old folder up to date with a new folder: files of both are merged,
// files of the new one are added, and files of the old one stay and are also written to the new
// one. Subfolders and other files are left alone. The old folder's XML files are first copied to
// the folder named after it with "_backup"; "_merged_temp" holds the result until it is complete.
// The log reports every step in fixed words. True when a file was merged or added. Throws
// FileSystemError when a file operation fails; everything stays as it is at that point.
bool MergeAndSyncFolders(const std::wstring& oldFolder, const std::wstring& newFolder,
                         const FolderMergePorts& ports);

}  // namespace carrovan
