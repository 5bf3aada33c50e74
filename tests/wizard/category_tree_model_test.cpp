#include "wizard/category_tree.h"

#include <gtest/gtest.h>

#include "tests/wizard/recording_frame.h"

namespace carrovan {
namespace {

using Item = CategoryTree::Item;
using enum SettingCategory;

CategorySet Everything() {
  CategorySet all;
  for (const CategoryRecord& record : CategoryTable()) all.insert(record.category);
  return all;
}

class CategoryTreeModel : public testing::Test {
 protected:
  CategoryTreeModel() { BuildCategoryTree(tree_, Everything()); }

  Item ItemOf(SettingCategory category) const {
    for (Item item = tree_.FirstChild(tree_.Root()); item != CategoryTree::kNoItem;
         item = tree_.NextSibling(item)) {
      if (tree_.ItemData(item) == static_cast<int>(category)) return item;
    }
    return CategoryTree::kNoItem;
  }

  // A mouse click on a box: what the program does, then the control's own toggle.
  std::optional<StringId> ClickBox(Item item) {
    auto description = ClickCategory(tree_, item, true);
    tree_.SetChecked(item, !tree_.IsChecked(item));
    return description;
  }

  std::vector<int> CheckedLeaves() const {
    std::vector<int> values;
    for (const SettingCategory category : CheckedCategories(tree_)) {
      values.push_back(static_cast<int>(category));
    }
    return values;
  }

  RecordingTree tree_;
};

TEST_F(CategoryTreeModel, ListsTheCategoriesInOrderBelowSelectAll) {
  EXPECT_EQ(tree_.texts.at(tree_.Root()), L"Select All");
  EXPECT_EQ(tree_.ItemData(tree_.Root()), 1);
  EXPECT_EQ(tree_.NextSibling(tree_.Root()), CategoryTree::kNoItem);
  Item item = tree_.FirstChild(tree_.Root());
  for (const CategoryRecord& record : CategoryTable()) {
    ASSERT_NE(item, CategoryTree::kNoItem);
    EXPECT_EQ(tree_.ItemData(item), static_cast<int>(record.category));
    EXPECT_EQ(tree_.texts.at(item), Text(record.label));
    EXPECT_EQ(tree_.Parent(item), tree_.Root());
    item = tree_.NextSibling(item);
  }
  EXPECT_EQ(item, CategoryTree::kNoItem);
}

TEST_F(CategoryTreeModel, LeavesOutWhatIsNotOffered) {
  CategorySet offered = Everything();
  offered.erase(CatalogLibrary);
  BuildCategoryTree(tree_, offered);
  EXPECT_EQ(CheckedLeaves(), (std::vector<int>{2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 13, 14}));
}

TEST_F(CategoryTreeModel, EverythingIsExpandedAndCheckedAtStart) {
  EXPECT_EQ(tree_.texts.size(), 14u);
  for (const auto& [item, text] : tree_.texts) {
    EXPECT_TRUE(tree_.IsChecked(item)) << testing::PrintToString(text);
    EXPECT_TRUE(tree_.expanded.contains(item)) << testing::PrintToString(text);
  }
}

TEST_F(CategoryTreeModel, BuildingAgainForgetsTheEarlierChoice) {
  ClickBox(tree_.Root());
  BuildCategoryTree(tree_, Everything());
  EXPECT_EQ(CheckedLeaves().size(), 13u);
  EXPECT_EQ(tree_.texts.size(), 14u);
  EXPECT_TRUE(tree_.IsChecked(tree_.Root()));
}

TEST_F(CategoryTreeModel, TreeWithoutCategoriesIsTheRootAlone) {
  BuildCategoryTree(tree_, {});
  EXPECT_EQ(tree_.FirstChild(tree_.Root()), CategoryTree::kNoItem);
  EXPECT_TRUE(tree_.IsChecked(tree_.Root()));
}

TEST_F(CategoryTreeModel, BoxOfSelectAllUnticksEveryCategory) {
  ClickBox(tree_.Root());
  EXPECT_FALSE(tree_.IsChecked(tree_.Root()));
  EXPECT_TRUE(CheckedLeaves().empty());
  ClickBox(tree_.Root());
  EXPECT_TRUE(tree_.IsChecked(tree_.Root()));
  EXPECT_EQ(CheckedLeaves().size(), 13u);
}

TEST_F(CategoryTreeModel, RootStaysUntickedUntilAllCategoriesAreTicked) {
  ClickBox(tree_.Root());
  for (const CategoryRecord& record : CategoryTable()) {
    EXPECT_FALSE(tree_.IsChecked(tree_.Root()));
    ClickBox(ItemOf(record.category));
  }
  EXPECT_TRUE(tree_.IsChecked(tree_.Root()));
}

TEST_F(CategoryTreeModel, FirstUntickedCategoryUnticksTheRootAndNoOther) {
  ClickBox(ItemOf(CosmeticThread));
  EXPECT_FALSE(tree_.IsChecked(tree_.Root()));
  EXPECT_EQ(CheckedLeaves().size(), 12u);
  EXPECT_FALSE(tree_.IsChecked(ItemOf(CosmeticThread)));
}

TEST_F(CategoryTreeModel, ClickedItemIsLeftForTheControlToToggle) {
  const Item item = ItemOf(Options);
  ClickCategory(tree_, item, true);
  EXPECT_TRUE(tree_.IsChecked(item));
  EXPECT_FALSE(tree_.IsChecked(tree_.Root()));
  EXPECT_EQ(tree_.selected, item);
}

TEST_F(CategoryTreeModel, ClickOnALabelChangesOnlyDescriptionAndSelection) {
  const Item item = ItemOf(ShortcutKey);
  EXPECT_EQ(ClickCategory(tree_, item, false), StringId::kShortcutKeyDescription);
  EXPECT_EQ(tree_.selected, item);
  EXPECT_EQ(CheckedLeaves().size(), 13u);
  EXPECT_TRUE(tree_.IsChecked(tree_.Root()));
}

TEST_F(CategoryTreeModel, EveryCategoryHasItsDescription) {
  for (const CategoryRecord& record : CategoryTable()) {
    EXPECT_EQ(ClickCategory(tree_, ItemOf(record.category), false), record.description);
    EXPECT_EQ(ClickBox(ItemOf(record.category)), record.description);
  }
}

TEST_F(CategoryTreeModel, ClickOnTheRootKeepsTheShownDescription) {
  EXPECT_EQ(ClickCategory(tree_, tree_.Root(), false), std::nullopt);
  EXPECT_EQ(ClickBox(tree_.Root()), std::nullopt);
  EXPECT_EQ(tree_.selected, tree_.Root());
}

TEST_F(CategoryTreeModel, ItemOfUnknownMeaningHasNoDescription) {
  for (const int data : {0, 15, -1}) {
    const Item item = tree_.Append(tree_.Root(), L"?", data);
    EXPECT_EQ(ClickCategory(tree_, item, false), std::nullopt) << data;
    EXPECT_EQ(tree_.selected, item);
  }
}

TEST_F(CategoryTreeModel, ClickBesideTheItemsDoesNothing) {
  EXPECT_EQ(ClickCategory(tree_, CategoryTree::kNoItem, true), std::nullopt);
  EXPECT_EQ(tree_.selected, CategoryTree::kNoItem);
  EXPECT_EQ(CheckedLeaves().size(), 13u);
}

TEST_F(CategoryTreeModel, KeyboardToggleDoesNotPropagate) {
  tree_.SetChecked(tree_.Root(), false);
  EXPECT_EQ(CheckedLeaves().size(), 13u);
}

TEST_F(CategoryTreeModel, DeeperLevelsFollowDownAndUp) {
  const Item parent = ItemOf(Register);
  const Item first = tree_.Append(parent, L"first", 0);
  const Item second = tree_.Append(parent, L"second", 0);
  ClickBox(parent);
  ClickBox(parent);
  EXPECT_TRUE(tree_.IsChecked(first));
  EXPECT_TRUE(tree_.IsChecked(second));
  ClickBox(second);
  EXPECT_FALSE(tree_.IsChecked(parent));
  EXPECT_FALSE(tree_.IsChecked(tree_.Root()));
  ClickBox(tree_.Root());
  EXPECT_TRUE(tree_.IsChecked(second));
}

TEST_F(CategoryTreeModel, OnlyCheckedLeavesOfCategoriesCount) {
  ClickBox(tree_.Root());
  CategoryTree& tree = tree_;
  tree.SetChecked(tree.Root(), true);
  for (const int data : {0, 1, 15, -1, 1000}) {
    tree.SetChecked(tree.Append(tree.Root(), L"of no category", data), true);
  }
  const Item above = tree.Append(tree.Root(), L"above", static_cast<int>(CustomMaterials));
  tree.SetChecked(above, true);
  tree.Append(above, L"below", static_cast<int>(ShortcutKey));
  EXPECT_EQ(CheckedLeaves(), std::vector<int>());

  tree.Clear();
  tree.SetChecked(tree.Append(CategoryTree::kNoItem, L"alone", 1), true);
  EXPECT_EQ(CheckedLeaves(), std::vector<int>());
}

TEST_F(CategoryTreeModel, TurnOfACategoryExpandsItsParentsAndSelectsItsLeaf) {
  tree_.expanded.clear();
  ShowCategory(tree_, CosmeticThread);
  EXPECT_EQ(tree_.selected, ItemOf(CosmeticThread));
  EXPECT_TRUE(tree_.expanded.contains(tree_.Root()));
}

}  // namespace
}  // namespace carrovan
