#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "rewrite/path_checker.h"
#include "rewrite/text_form.h"

namespace carrovan {

// Gets a line that is left out and the key line above it, both trimmed.
using TellDroppedLine = std::function<void(std::u16string_view keyLine, std::u16string_view line)>;

// What is known of the lines left out while a file comes block by block.
struct DroppedLines {
  TellDroppedLine tell;    // may be empty
  std::u16string keyLine;  // the last one, where somebody is to be told
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
