#include "wizard/category_tree.h"

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

namespace {

using Item = CategoryTree::Item;

void ExpandAndCheck(EditableCategoryTree& tree, Item item) {
  tree.Expand(item);
  tree.SetChecked(item, true);
  for (Item child = tree.FirstChild(item); child != CategoryTree::kNoItem;
       child = tree.NextSibling(child)) {
    ExpandAndCheck(tree, child);
  }
}

void PropagateDown(EditableCategoryTree& tree, Item item) {
  const bool checked = tree.IsChecked(item);
  for (Item child = tree.FirstChild(item); child != CategoryTree::kNoItem;
       child = tree.NextSibling(child)) {
    tree.SetChecked(child, checked);
    PropagateDown(tree, child);
  }
}

bool AreAllChildrenChecked(const CategoryTree& tree, Item item) {
  for (Item child = tree.FirstChild(item); child != CategoryTree::kNoItem;
       child = tree.NextSibling(child)) {
    if (!tree.IsChecked(child)) return false;
  }
  return true;
}

void PropagateUp(EditableCategoryTree& tree, Item item) {
  const Item parent = tree.Parent(item);
  if (parent == CategoryTree::kNoItem) return;
  tree.SetChecked(parent, AreAllChildrenChecked(tree, parent));
  PropagateUp(tree, parent);
}

void PrepareToggle(EditableCategoryTree& tree, Item item) {
  const bool checked = tree.IsChecked(item);
  SetCheckedWithRelatives(tree, item, !checked);
  tree.SetChecked(item, checked);
  tree.Select(item);
}

}  // namespace

void BuildCategoryTree(EditableCategoryTree& tree,
                       const std::function<bool(const CategoryRecord&)>& isOffered) {
  tree.Clear();
  const Item root = tree.Append(CategoryTree::kNoItem, std::wstring(Text(StringId::kSelectAll)),
                                static_cast<int>(SettingCategory::SelectAll));
  for (const CategoryRecord& record : CategoryTable()) {
    if (!isOffered(record)) continue;
    tree.Append(root, std::wstring(Text(record.label)), static_cast<int>(record.category));
  }
  ExpandAndCheck(tree, root);
}

void SetCheckedWithRelatives(EditableCategoryTree& tree, Item item, bool checked) {
  tree.SetChecked(item, checked);
  PropagateDown(tree, item);
  PropagateUp(tree, item);
}

std::optional<std::wstring> ClickCategory(EditableCategoryTree& tree, Item item, bool onCheckBox) {
  if (item == CategoryTree::kNoItem) return std::nullopt;
  tree.Select(item);
  const CategoryRecord* record = FindCategory(tree.ItemData(item));
  if (onCheckBox) PrepareToggle(tree, item);
  if (record == nullptr) return std::nullopt;
  return std::wstring(Text(record->description));
}

}  // namespace carrovan
