#pragma once

#include <vector>

#include "environment/setting_category.h"
#include "platform/category_tree.h"

namespace carrovan {

// A category tree without a window: the root with the offered categories below it.
class CategoryChecklist : public CategoryTree {
 public:
  // Every category that an export of the version in the context offers, checked.
  static CategoryChecklist ForExport(const ProductContext& context);

  // False, and no change, when the category is not offered.
  bool SetChecked(SettingCategory category, bool checked);
  void SetAllChecked(bool checked);

  // The root reads checked when every category is.
  Item Root() const override;
  Item FirstChild(Item item) const override;
  Item NextSibling(Item item) const override;
  bool IsChecked(Item item) const override;
  int ItemData(Item item) const override;

 private:
  struct Leaf {
    SettingCategory category;
    bool checked;
  };

  std::vector<Leaf> leaves_;
};

}  // namespace carrovan
