#pragma once

#include <cstdint>
#include <string>

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

// A tree of check boxes that can be built and changed.
class EditableCategoryTree : public CategoryTree {
 public:
  virtual void Clear() = 0;

  // Adds an unchecked item behind the parent's last child; kNoItem as parent makes the root.
  virtual Item Append(Item parent, const std::wstring& text, int itemData) = 0;

  // kNoItem for the root.
  virtual Item Parent(Item item) const = 0;

  virtual void SetChecked(Item item, bool checked) = 0;
  virtual void Expand(Item item) = 0;

  // Makes it the item with the caret, and scrolls it into view.
  virtual void Select(Item item) = 0;
};

}  // namespace carrovan
