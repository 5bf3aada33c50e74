#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "environment/setting_category.h"
#include "environment/string_table.h"

namespace carrovan {

// The tree of check boxes of a category page.
class CategoryTree {
 public:
  using Item = std::uintptr_t;
  static constexpr Item kNoItem = 0;

  virtual ~CategoryTree() = default;

  // kNoItem where there is none.
  virtual Item Root() const = 0;
  virtual Item FirstChild(Item item) const = 0;
  virtual Item NextSibling(Item item) const = 0;
  virtual Item Parent(Item item) const = 0;

  virtual bool IsChecked(Item item) const = 0;

  // 1 for the root, 2 to 14 for a category; anything else means nothing.
  virtual int ItemData(Item item) const = 0;

  virtual void Clear() = 0;

  // Adds an unchecked item behind the parent's last child; kNoItem as parent makes the root.
  virtual Item Append(Item parent, const std::wstring& text, int itemData) = 0;

  virtual void SetChecked(Item item, bool checked) = 0;
  virtual void Expand(Item item) = 0;

  // Makes it the item with the caret, and scrolls it into view.
  virtual void Select(Item item) = 0;
};

// The behaviour that the trees of the export, import and reset pages share.

// Makes the tree anew: the root, below it the offered categories, all expanded and checked.
void BuildCategoryTree(CategoryTree& tree, const CategorySet& offered,
                       const TextSource& texts = EnglishTexts());

// The checked leaves that are categories. An item with others below it never counts itself.
CategorySet CheckedCategories(const CategoryTree& tree);

// Gives the caret to a category's leaf and expands what is above it.
void ShowCategory(CategoryTree& tree, SettingCategory category);

// Gives an item a state, gives it to everything below it and brings everything above it in line: an
// item with others below it is checked when all of them are.
void SetCheckedWithRelatives(CategoryTree& tree, CategoryTree::Item item, bool checked);

// What a mouse click on an item does, before the control's own handling of the click: the item
// gets the caret, and a click on its check box gives the state that it is about to take to
// everything below it and brings everything above it in line. The item itself is left as it was,
// because the control still toggles it. The answer is the text of the description to show; nothing
// when the shown one stays.
std::optional<StringId> ClickCategory(CategoryTree& tree, CategoryTree::Item item, bool onCheckBox);

}  // namespace carrovan
