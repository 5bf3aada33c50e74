#include "environment/category_checklist.h"

#include <algorithm>

namespace carrovan {
namespace {

// Items count from the root, so a leaf's item is its position plus this.
constexpr CategoryTree::Item kRootItem = 1;
constexpr CategoryTree::Item kFirstLeaf = 2;

}  // namespace

CategoryChecklist CategoryChecklist::ForExport(const ProductContext& context) {
  CategoryChecklist list;
  for (const CategoryRecord& record : CategoryTable()) {
    if (IsOfferedOnExport(record, context)) list.leaves_.push_back({record.category, true});
  }
  return list;
}

bool CategoryChecklist::SetChecked(SettingCategory category, bool checked) {
  const auto leaf = std::find_if(leaves_.begin(), leaves_.end(), [category](const Leaf& candidate) {
    return candidate.category == category;
  });
  if (leaf == leaves_.end()) return false;
  leaf->checked = checked;
  return true;
}

void CategoryChecklist::SetAllChecked(bool checked) {
  for (Leaf& leaf : leaves_) leaf.checked = checked;
}

CategoryTree::Item CategoryChecklist::Root() const { return kRootItem; }

CategoryTree::Item CategoryChecklist::FirstChild(Item item) const {
  return item == kRootItem && !leaves_.empty() ? kFirstLeaf : kNoItem;
}

CategoryTree::Item CategoryChecklist::NextSibling(Item item) const {
  return item >= kFirstLeaf && item - kRootItem < leaves_.size() ? item + 1 : kNoItem;
}

bool CategoryChecklist::IsChecked(Item item) const {
  if (item >= kFirstLeaf) return leaves_.at(item - kFirstLeaf).checked;
  return std::all_of(leaves_.begin(), leaves_.end(), [](const Leaf& leaf) { return leaf.checked; });
}

int CategoryChecklist::ItemData(Item item) const {
  return static_cast<int>(item >= kFirstLeaf ? leaves_.at(item - kFirstLeaf).category
                                             : SettingCategory::SelectAll);
}

}  // namespace carrovan
