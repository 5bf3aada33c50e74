#pragma once

#include <functional>
#include <string>

#include "platform/file_system.h"
#include "platform/system_facts.h"
#include "rewrite/path_map.h"

namespace carrovan {

// Where a path stands in a file of a package.
struct PathPlace {
  std::wstring key;      // of a registry file, with its hive spelled out; empty in a document
  std::wstring name;     // of the value; empty for the default value
  std::size_t line = 0;  // from 1
  bool asBytes = false;  // in data that stand there as bytes, which the rewriting passes over

  bool operator==(const PathPlace&) const = default;
};

enum class PathOutcome {
  kStays,
  kMapped,
  kTooLong,   // stays, since mapped it would be longer than a path or a value's name can be
  kUnspelled  // stays, since the file's encoding lacks a character of what it would be
};

// A path as a walk comes to it.
struct WalkedPath {
  std::wstring path;  // as the file has it, with one backslash between two names
  PathPlace place;
  PathOutcome outcome = PathOutcome::kStays;
  std::wstring becomes;  // the path that it is, or would be, mapped to; empty when none fits
};
using ReportPath = std::function<void(const WalkedPath& walked)>;

// Walks the absolute paths of a registry file or of a document: names and data of values, also of
// expandable strings and lists of strings that stand there as bytes, and all text of a document.
// Keys and comments of a registry file are passed over. A file is a registry file or a document by
// its name.

// True for a file that holds paths to be walked: ".reg" and ".xml", in any case.
bool IsWalkedFile(const std::wstring& file);

// Changes nothing, and reports each path with what the map would make of it. The code is that of
// the reading that failed; kInvalidData for a document in an encoding that is not known here.
[[nodiscard]] SystemCode WalkPaths(const std::wstring& file, const FileReader& files,
                                   const CodePage& codePage, const PathMap& map,
                                   const ReportPath& report);

// The same, and then maps. The file is replaced in one step, and only when a path is mapped;
// everything else in it stays byte for byte. When that fails, the file is as it was.
[[nodiscard]] SystemCode MapPaths(const std::wstring& file, FileSystem& files,
                                  const CodePage& codePage, const PathMap& map,
                                  const ReportPath& report);

}  // namespace carrovan
