#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace carrovan {

// The text of an initialization file, read and changed as the system's profile functions do: names
// compare without regard to case, blanks around names and values are cut, a line that begins with a
// semicolon is a comment. Where the text lies and in which encoding is the caller's business.

// The value as it stands; empty when the section or the key is missing. One pair of quotes (single
// or double) around the value is cut.
std::wstring ProfileValue(std::wstring_view text, std::wstring_view section, std::wstring_view key);

// The names of a section's keys in their order.
std::vector<std::wstring> ProfileKeys(std::wstring_view text, std::wstring_view section);

// The text with the key set. A new key goes to the end of its section, a new section to the end of
// the text; every other line stays as it is. Lines end in CR LF.
std::wstring WithProfileValue(std::wstring_view text, std::wstring_view section,
                              std::wstring_view key, std::wstring_view value);

}  // namespace carrovan
