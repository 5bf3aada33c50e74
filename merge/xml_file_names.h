#pragma once

#include <set>
#include <string>
#include <string_view>

#include "platform/file_system.h"

namespace carrovan {

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

}  // namespace carrovan
