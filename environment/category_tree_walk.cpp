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

void WalkLeaves(EditableCategoryTree& tree, CategoryTree::Item item,
                const std::function<void(CategoryTree::Item)>& visit) {
  if (item == CategoryTree::kNoItem) return;
  tree.Expand(item);
  CategoryTree::Item child = tree.FirstChild(item);
  if (child == CategoryTree::kNoItem) {
    tree.Select(item);
    return visit(item);
  }
  for (; child != CategoryTree::kNoItem; child = tree.NextSibling(child)) {
    WalkLeaves(tree, child, visit);
  }
}

}  // namespace carrovan
