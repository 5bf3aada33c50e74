#include "tests/support/category_checklist.h"

#include <algorithm>

#include "wizard/category_tree.h"

namespace carrovan {

bool CategoryChecklist::SetChecked(SettingCategory category, bool checked) {
  for (Item item = FirstChild(Root()); item != kNoItem; item = NextSibling(item)) {
    if (At(item).data != static_cast<int>(category)) continue;
    SetCheckedWithRelatives(*this, item, checked);
    return true;
  }
  return false;
}

void CategoryChecklist::SetAllChecked(bool checked) {
  for (Node& node : nodes_) node.checked = checked;
}

CategoryTree::Item CategoryChecklist::Root() const { return nodes_.empty() ? kNoItem : 1; }

CategoryTree::Item CategoryChecklist::FirstChild(Item item) const {
  return item == kNoItem ? kNoItem : FirstChildBehind(item, item);
}

CategoryTree::Item CategoryChecklist::NextSibling(Item item) const {
  return FirstChildBehind(item, Parent(item));
}

bool CategoryChecklist::IsChecked(Item item) const { return At(item).checked; }

int CategoryChecklist::ItemData(Item item) const { return At(item).data; }

void CategoryChecklist::Clear() { nodes_.clear(); }

CategoryTree::Item CategoryChecklist::Append(Item parent, const std::wstring&, int itemData) {
  nodes_.push_back({parent, itemData, false});
  return nodes_.size();
}

CategoryTree::Item CategoryChecklist::Parent(Item item) const { return At(item).parent; }

void CategoryChecklist::SetChecked(Item item, bool checked) {
  nodes_.at(item - 1).checked = checked;
}

CategoryTree::Item CategoryChecklist::FirstChildBehind(Item behind, Item parent) const {
  // Nodes stand in the order in which they were appended, so children come behind their parent.
  for (Item item = behind + 1; item <= nodes_.size(); ++item) {
    if (At(item).parent == parent) return item;
  }
  return kNoItem;
}

}  // namespace carrovan
