#pragma once

#include <string>
#include <string_view>

namespace carrovan {

// Names of files and keys may hold units that are no characters, which UTF-8 cannot say. In a
// journal such a unit, and the percent sign itself, is "%" and four hexadecimal digits.
std::string ToJournalText(std::wstring_view text);
std::wstring FromJournalText(std::string_view utf8);

}  // namespace carrovan
