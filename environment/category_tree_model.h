#pragma once

#include <functional>
#include <optional>
#include <string>

#include "environment/setting_category.h"
#include "platform/category_tree.h"

namespace carrovan {

// The behaviour that the trees of the export, import and reset pages share.

// Makes the tree anew: the root, below it the categories that the test accepts, all expanded and
// checked.
void BuildCategoryTree(EditableCategoryTree& tree,
                       const std::function<bool(const CategoryRecord&)>& isOffered);

// Gives an item a state, gives it to everything below it and brings everything above it in line: an
// item with others below it is checked when all of them are.
void SetCheckedWithRelatives(EditableCategoryTree& tree, CategoryTree::Item item, bool checked);

// What a mouse click on an item does, before the control's own handling of the click: the item
// gets the caret, and a click on its check box gives the state that it is about to take to
// everything below it and brings everything above it in line. The item itself is left as it was,
// because the control still toggles it. The answer is the description to show; nothing when the
// shown one stays.
std::optional<std::wstring> ClickCategory(EditableCategoryTree& tree, CategoryTree::Item item,
                                          bool onCheckBox);

}  // namespace carrovan
