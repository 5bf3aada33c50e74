#pragma once

#include <string>
#include <vector>

#include "environment/setting_category.h"
#include "wizard/category_tree.h"

namespace carrovan {

// A category tree without a window. It has nothing to show, so it keeps neither texts nor what is
// expanded or selected.
class CategoryChecklist : public CategoryTree {
 public:
  CategoryChecklist() = default;
  // These categories, checked.
  explicit CategoryChecklist(const CategorySet& offered) { BuildCategoryTree(*this, offered); }

  // Checks or unchecks an offered category as a click on its box does. False, and no change, when
  // the category is not offered.
  bool SetChecked(SettingCategory category, bool checked);
  void SetAllChecked(bool checked);

  Item Root() const override;
  Item FirstChild(Item item) const override;
  Item NextSibling(Item item) const override;
  bool IsChecked(Item item) const override;
  int ItemData(Item item) const override;

  void Clear() override;
  Item Append(Item parent, const std::wstring& text, int itemData) override;
  Item Parent(Item item) const override;
  void SetChecked(Item item, bool checked) override;
  void Expand(Item) override {}
  void Select(Item) override {}

 private:
  struct Node {
    Item parent = kNoItem;
    int data = 0;
    bool checked = false;
  };

  const Node& At(Item item) const { return nodes_.at(item - 1); }
  Item FirstChildBehind(Item behind, Item parent) const;

  std::vector<Node> nodes_;  // an item is its node's position plus one
};

}  // namespace carrovan
