#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace carrovan {

// One ribbon element: a button, a group, or a member of one. Everything but `id` is carried through
// unread.
struct sRibbonElement {
  std::int32_t kind = 0;
  std::uint32_t id = 0;
  std::wstring text1;
  std::uint32_t value2 = 0;
  std::wstring text2;
  std::vector<sRibbonElement> children;
  std::int32_t value3 = 0;
  std::wstring text3;
  std::wstring text4;

  bool operator==(const sRibbonElement&) const = default;
};

}  // namespace carrovan
