#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace carrovan {

// A text of a ribbon element. Old records also hold texts in 8 bits, in a code page that they do
// not name: of such a text the bytes are kept.
using RibbonText = std::variant<std::wstring, std::string>;

// One ribbon element: a button, a group, or a member of one. Everything but `id` is carried through
// unread.
struct sRibbonElement {
  std::int32_t kind = 0;
  std::uint32_t id = 0;
  RibbonText text1;
  std::uint32_t value2 = 0;
  RibbonText text2;
  std::vector<sRibbonElement> children;
  std::int32_t value3 = 0;
  RibbonText text3;
  RibbonText text4;

  bool operator==(const sRibbonElement&) const = default;
};

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
