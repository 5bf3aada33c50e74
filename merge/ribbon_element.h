#pragma once

#include <cstdint>
#include <string>
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

}  // namespace carrovan
