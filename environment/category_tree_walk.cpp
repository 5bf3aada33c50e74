#include "environment/category_tree_walk.h"

namespace carrovan {

void VisitLeaves(const CategoryTree& tree, CategoryTree::Item item,
                 const std::function<void(CategoryTree::Item)>& visit) {
  if (item == CategoryTree::kNoItem) return;
  CategoryTree::Item child = tree.FirstChild(item);
  if (child == CategoryTree::kNoItem) return visit(item);
  for (; child != CategoryTree::kNoItem; child = tree.NextSibling(child)) {
    VisitLeaves(tree, child, visit);
  }
}

}  // namespace carrovan
