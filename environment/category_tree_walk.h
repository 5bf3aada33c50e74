#pragma once

#include <functional>

#include "platform/category_tree.h"

namespace carrovan {

// Calls `visit` for every leaf below an item (or for the item itself when it is one), depth first
// in tree order.
void VisitLeaves(const CategoryTree& tree, CategoryTree::Item item,
                 const std::function<void(CategoryTree::Item)>& visit);

// The same for a run that the user watches: each parent is expanded and each leaf gets the caret on
// the way.
void WalkLeaves(EditableCategoryTree& tree, CategoryTree::Item item,
                const std::function<void(CategoryTree::Item)>& visit);

}  // namespace carrovan
