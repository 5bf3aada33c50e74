#include "tests/support/category_checklist.h"

#include <gtest/gtest.h>

#include "tests/support/test_machine.h"
#include "wizard/category_tree.h"

namespace carrovan {
namespace {

ProductContext VantricContext(const wchar_t* year) {
  ProductContext context;
  context.brandFlag = 1;
  context.humanReadableVersion = year;
  return context;
}

std::vector<int> ValuesOf(const CategorySet& categories) {
  std::vector<int> values;
  for (const SettingCategory category : categories) values.push_back(static_cast<int>(category));
  return values;
}

std::vector<int> LeavesOf(const CategoryTree& tree) {
  std::vector<int> values;
  for (auto item = tree.FirstChild(tree.Root()); item != CategoryTree::kNoItem;
       item = tree.NextSibling(item)) {
    values.push_back(tree.ItemData(item));
  }
  return values;
}

TEST(OfferedCategories, ListsTheOfferedCategoriesInValueOrder) {
  EXPECT_EQ(LeavesOf(CategoryChecklist(OfferedOnExport(VantricContext(L"2026")))),
            (std::vector<int>{2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14}));
  EXPECT_EQ(LeavesOf(CategoryChecklist(OfferedOnExport(VantricContext(L"2025")))),
            (std::vector<int>{2, 3, 4, 5, 6, 8, 9, 10, 11, 12, 13, 14}));
}

TEST(OfferedCategories, OrmaBrandListsNoCatalogLibraryAndNothingShifts) {
  ProductContext context = VantricContext(L"2026");
  context.brandFlag = 0;
  EXPECT_EQ(ValuesOf(OfferedOnExport(context)),
            (std::vector<int>{2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 13, 14}));
}

TEST(OfferedCategories, EverythingIsCheckedAtStart) {
  const auto list = CategoryChecklist(OfferedOnExport(VantricContext(L"2026")));
  EXPECT_TRUE(list.IsChecked(list.Root()));
  EXPECT_EQ(list.ItemData(list.Root()), 1);
  EXPECT_EQ(CheckedCategories(list), OfferedOnExport(VantricContext(L"2026")));
}

TEST(OfferedCategories, RootIsCheckedOnlyWhileAllAre) {
  auto list = CategoryChecklist(OfferedOnExport(VantricContext(L"2026")));
  EXPECT_TRUE(list.SetChecked(SettingCategory::Register, false));
  EXPECT_FALSE(list.IsChecked(list.Root()));
  EXPECT_TRUE(list.SetChecked(SettingCategory::Register, true));
  EXPECT_TRUE(list.IsChecked(list.Root()));
}

TEST(OfferedCategories, CategoryThatIsNotOfferedCannotBeChecked) {
  auto list = CategoryChecklist(OfferedOnExport(VantricContext(L"2025")));
  EXPECT_FALSE(list.SetChecked(SettingCategory::Bom3dConfiguration, true));
  EXPECT_FALSE(list.SetChecked(SettingCategory::SelectAll, true));
}

TEST(OfferedCategories, ResetListsTheCategoriesOfTheBrandWhateverTheRelease) {
  ProductContext context = VantricContext(L"2025");
  EXPECT_EQ(ValuesOf(OfferedOnReset(context)),
            (std::vector<int>{2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14}));
  context.brandFlag = 0;
  EXPECT_EQ(ValuesOf(OfferedOnReset(context)),
            (std::vector<int>{2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 13, 14}));
}

TEST(OfferedCategories, ImportListsWhatThePackageMarks) {
  const auto machine = NewTestMachine();
  const std::wstring path = machine->ScratchFolder() + L"config.ini";
  machine->PutFile(path,
                   "[Selected]\r\nCatalog Library=1\r\nOptions=1\r\nRegister=0\r\n"
                   "Shortcut key=yes\r\n3dbom configuration=1\r\n");
  const auto list = CategoryChecklist(OfferedOnImport(*machine->Ports().profiles, path));
  EXPECT_EQ(LeavesOf(list), (std::vector<int>{2, 7, 12}));
  EXPECT_TRUE(list.IsChecked(list.Root()));
}

TEST(OfferedCategories, PackageWithoutAnyMarkHasTheRootAlone) {
  const auto machine = NewTestMachine();
  const std::wstring path = machine->ScratchFolder() + L"config.ini";
  for (const bool exists : {false, true}) {
    if (exists) machine->PutFile(path, "[Base]\r\nPRODUCT=VANTRIC\r\n");
    const auto list = CategoryChecklist(OfferedOnImport(*machine->Ports().profiles, path));
    EXPECT_EQ(list.ItemData(list.Root()), 1);
    EXPECT_EQ(list.FirstChild(list.Root()), CategoryTree::kNoItem);
  }
}

TEST(OfferedCategories, ListWithoutItemsHasNoRoot) {
  CategoryChecklist list;
  EXPECT_EQ(list.Root(), CategoryTree::kNoItem);
  EXPECT_FALSE(list.SetChecked(SettingCategory::Options, true));
}

}  // namespace
}  // namespace carrovan
