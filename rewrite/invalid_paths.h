#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "rewrite/path_checker.h"
#include "rewrite/text_form.h"

namespace carrovan {

// Looks at the lines of a registry file for those whose string value is an absolute path that does
// not exist. A text is a number of whole lines: units of a UTF-16 file, bytes of another one.

bool HoldsInvalidPath(std::u16string_view lines, const TextForm& form, PathChecker& paths);
bool HoldsInvalidPath(std::string_view lines, const TextForm& form, PathChecker& paths);

// Adds the bytes of the other lines, trimmed and each with CR LF behind it, to `kept` and gives the
// number of those left out.
std::size_t AppendOtherLines(std::u16string_view lines, const TextForm& form, PathChecker& paths,
                             std::string& kept);
std::size_t AppendOtherLines(std::string_view lines, const TextForm& form, PathChecker& paths,
                             std::string& kept);

}  // namespace carrovan
