#include "wizard/category_tree.h"

namespace carrovan {
namespace {

using Item = CategoryTree::Item;

void ExpandAndCheck(CategoryTree& tree, Item item) {
  tree.Expand(item);
  tree.SetChecked(item, true);
  for (Item child = tree.FirstChild(item); child != CategoryTree::kNoItem;
       child = tree.NextSibling(child)) {
    ExpandAndCheck(tree, child);
  }
}

void PropagateDown(CategoryTree& tree, Item item) {
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

void PropagateUp(CategoryTree& tree, Item item) {
  const Item parent = tree.Parent(item);
  if (parent == CategoryTree::kNoItem) return;
  tree.SetChecked(parent, AreAllChildrenChecked(tree, parent));
  PropagateUp(tree, parent);
}

void PrepareToggle(CategoryTree& tree, Item item) {
  const bool checked = tree.IsChecked(item);
  SetCheckedWithRelatives(tree, item, !checked);
  tree.SetChecked(item, checked);
  tree.Select(item);
}

void AddChecked(const CategoryTree& tree, Item item, CategorySet& categories) {
  if (item == CategoryTree::kNoItem) return;
  Item child = tree.FirstChild(item);
  const CategoryRecord* record = FindCategory(tree.ItemData(item));
  if (child == CategoryTree::kNoItem && record != nullptr && tree.IsChecked(item)) {
    categories.insert(record->category);
  }
  for (; child != CategoryTree::kNoItem; child = tree.NextSibling(child)) {
    AddChecked(tree, child, categories);
  }
}

void ShowBelow(CategoryTree& tree, Item item, int itemData) {
  if (item == CategoryTree::kNoItem) return;
  tree.Expand(item);
  Item child = tree.FirstChild(item);
  if (child == CategoryTree::kNoItem && tree.ItemData(item) == itemData) tree.Select(item);
  for (; child != CategoryTree::kNoItem; child = tree.NextSibling(child)) {
    ShowBelow(tree, child, itemData);
  }
}

}  // namespace

void BuildCategoryTree(CategoryTree& tree, const CategorySet& offered, const TextSource& texts) {
  tree.Clear();
  const Item root = tree.Append(CategoryTree::kNoItem, texts.Text(StringId::kSelectAll),
                                static_cast<int>(SettingCategory::SelectAll));
  for (const SettingCategory category : offered) {
    const int itemData = static_cast<int>(category);
    tree.Append(root, std::wstring(Text(FindCategory(itemData)->label)), itemData);
  }
  ExpandAndCheck(tree, root);
}

CategorySet CheckedCategories(const CategoryTree& tree) {
  CategorySet categories;
  AddChecked(tree, tree.Root(), categories);
  return categories;
}

void ShowCategory(CategoryTree& tree, SettingCategory category) {
  ShowBelow(tree, tree.Root(), static_cast<int>(category));
}

void SetCheckedWithRelatives(CategoryTree& tree, Item item, bool checked) {
  tree.SetChecked(item, checked);
  PropagateDown(tree, item);
  PropagateUp(tree, item);
}

std::optional<StringId> ClickCategory(CategoryTree& tree, Item item, bool onCheckBox) {
  if (item == CategoryTree::kNoItem) return std::nullopt;
  tree.Select(item);
  const CategoryRecord* record = FindCategory(tree.ItemData(item));
  if (onCheckBox) PrepareToggle(tree, item);
  if (record == nullptr) return std::nullopt;
  return record->description;
}

}  // namespace carrovan
