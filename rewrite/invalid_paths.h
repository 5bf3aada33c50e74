#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "platform/file_system.h"
#include "rewrite/document_text.h"
#include "rewrite/path_map.h"

namespace carrovan {

// Finds out whether the paths of a registry file exist. Asks for each distinct path once, and for
// nothing in a folder that is not there.
class PathChecker {
 public:
  // Behind a path that begins with one of these, the text may go on with something else, such as
  // the arguments of a program.
  explicit PathChecker(const FileReader& files, const std::vector<std::wstring>& mappedTo = {});

  // `spelling` is the path as it stands in the file, with its escaping.
  bool Exists(std::u16string_view spelling);

 private:
  // Lets a spelling be looked up without a copy of it.
  struct Hash : std::hash<std::u16string_view> {
    using is_transparent = void;
  };

  bool ExistsWhole(std::u16string_view spelling);
  bool BeginsWithMapped(std::u16string_view spelling) const;
  bool FolderMayHold(std::wstring path);

  const FileReader& files_;
  const PathMap mappedTo_;  // of which only the beginnings count
  std::unordered_map<std::u16string, bool, Hash, std::equal_to<>> paths_;  // by spelling
  std::unordered_map<std::wstring, bool> folders_;
  // Fronts of paths, with the last separator, whose folder is not there. Most paths that lead to
  // nothing have one of a few, so that they are recognised without being made into paths.
  std::unordered_set<std::u16string, Hash, std::equal_to<>> missingFronts_;
};

// Gets a line that is left out and the key line above it, both trimmed.
using ReportDroppedLine =
    std::function<void(std::u16string_view keyLine, std::u16string_view line)>;

// What is known of the lines left out while a file comes block by block.
struct DroppedLines {
  ReportDroppedLine report;  // may be empty
  std::u16string keyLine;    // the last one, where somebody wants to know
  std::size_t count = 0;
};

// Looks at the lines of a registry file for those whose string value is an absolute path that does
// not exist. A text is a number of whole lines: units of a UTF-16 file, bytes of another one.

bool HoldsInvalidPath(std::u16string_view lines, const TextForm& form, PathChecker& paths);
bool HoldsInvalidPath(std::string_view lines, const TextForm& form, PathChecker& paths);

// Adds the bytes of the other lines, trimmed and each with CR LF behind it, to `kept`.
void AppendOtherLines(std::u16string_view lines, const TextForm& form, PathChecker& paths,
                      DroppedLines& dropped, std::string& kept);
void AppendOtherLines(std::string_view lines, const TextForm& form, PathChecker& paths,
                      DroppedLines& dropped, std::string& kept);

}  // namespace carrovan
