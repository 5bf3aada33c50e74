#pragma once

#include <cstdint>

namespace carrovan {

// A tree of check boxes, as far as a run needs it: walk it and read it.
class CategoryTree {
 public:
  using Item = std::uintptr_t;
  static constexpr Item kNoItem = 0;

  virtual ~CategoryTree() = default;

  // kNoItem where there is none.
  virtual Item Root() const = 0;
  virtual Item FirstChild(Item item) const = 0;
  virtual Item NextSibling(Item item) const = 0;

  virtual bool IsChecked(Item item) const = 0;

  // 1 for the root, 2 to 14 for a category; anything else means nothing.
  virtual int ItemData(Item item) const = 0;
};

}  // namespace carrovan
