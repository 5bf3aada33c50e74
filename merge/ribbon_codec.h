#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "merge/ribbon_element.h"

namespace carrovan {

// The text form of a ribbon element: its archive stream as hexadecimal digits, two to a byte.

// A record may nest this deep, itself included; one that nests deeper is not read.
inline constexpr int kRibbonLevels = 64;

// A text of 8 bits is written as its bytes, every other one in 16-bit units behind the mark of
// such.
std::wstring RibbonElementToText(const sRibbonElement& record);

// Both cases of digit are read. False for a text of odd length or with another character, for a
// stream that ends early or claims more than it holds, and for one that nests too deep; the record
// is then a fresh one. Bytes behind the record are ignored.
[[nodiscard]] bool RibbonElementFromText(std::wstring_view text, sRibbonElement& record);

}  // namespace carrovan
