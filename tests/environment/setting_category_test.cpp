#include "environment/setting_category.h"

#include <gtest/gtest.h>

#include <climits>

#include "tests/support/test_machine.h"

namespace carrovan {
namespace {

const CategoryRecord& Record(SettingCategory category) {
  return *FindCategory(static_cast<int>(category));
}

struct CategoryRow {
  int value;
  int labelNumber;
  const wchar_t* label;
  int descriptionNumber;
  const wchar_t* description;
};

constexpr CategoryRow kRows[] = {
    {2, 134, L"Options", 115, L"all the settings in the options dialog."},
    {3, 135, L"Register", 116, L"all registry related settings, including options"},
    {4, 136, L"Interface layout", 117,
     L"all the interface layout related settings, including menu bar, toolbar, etc."},
    {5, 137, L"Document Template", 158, L"all the document template related settings."},
    {6, 138, L"Shortcut key", 149, L"all the shortcut key related settings."},
    {7, 140, L"3DBOM Configuration", 150,
     L"all the 3DBOM related settings (Add in 2026, set the rows and columns displayed in the "
     L"BOM)."},
    {8, 139, L"Property Templates", 151, L"all the property template related settings."},
    {9, 141, L"Custom materials", 152, L"all the customized materials related settings."},
    {10, 142, L"Custom Parts Library", 160, L"all the custom parts related settings."},
    {11, 144, L"2D Draft Settings", 161,
     L"Settings related to Tools-Options for 2D engineering drawings."},
    {12, 145, L"Catalog Library", 154, L"all the catalog library related settings."},
    {13, 146, L"Sheet Metal Library", 153, L"all the customized sheet metal related settings."},
    {14, 147, L"Cosmetic Thread", 159, L"all the cosmetic thread related settings."},
};

TEST(SettingCategory, ThirteenCategoriesKeepTheirOrderLabelsAndDescriptions) {
  const auto table = CategoryTable();
  ASSERT_EQ(table.size(), std::size(kRows));
  for (std::size_t i = 0; i < table.size(); ++i) {
    EXPECT_EQ(static_cast<int>(table[i].category), kRows[i].value);
    EXPECT_EQ(static_cast<int>(table[i].label), kRows[i].labelNumber);
    EXPECT_EQ(Text(table[i].label), kRows[i].label);
    EXPECT_EQ(static_cast<int>(table[i].description), kRows[i].descriptionNumber);
    EXPECT_EQ(Text(table[i].description), kRows[i].description);
    EXPECT_EQ(FindCategory(kRows[i].value), &table[i]);
  }
}

TEST(SettingCategory, ValuesOutsideTheCategoriesAreNobody) {
  for (const int value : {0, 1, 15, -1, 1000, INT_MIN, INT_MAX}) {
    EXPECT_EQ(FindCategory(value), nullptr) << value;
  }
}

TEST(SettingCategory, LabelsAreFoundWithoutRegardToCase) {
  EXPECT_EQ(FindCategoryByLabel(L"2d draft settings"), &Record(SettingCategory::Draft2dSettings));
  EXPECT_EQ(FindCategoryByLabel(L"Select All"), nullptr);
  EXPECT_EQ(FindCategoryByLabel(L""), nullptr);
}

// The names are the product's own, and the packages' as well.
TEST(SettingCategory, OptionSubkeysKeepTheirNamesAndOrder) {
  const std::vector<std::wstring_view> kNames = {
      L"\\General",
      L"\\DimensionFont",
      L"\\HideCommandAutoTips",
      L"\\Model",
      L"\\Color",
      L"\\Surface_Finish",
      L"\\Directories",
      L"\\Bulk Drawing Creation Template Directories",
      L"\\Draw",
      L"\\Grid",
      L"\\MouseCustomize",
      L"\\SheetMetal",
      L"\\Tessaline",
      L"\\UIInteraction",
      L"\\Annotations",
      L"\\Render",
      L"\\AutoCAD Import",
      L"\\Point Snap",
      L"\\m3DWire",
      L"\\Import Options",
      L"\\BOMDataExport",
      L"\\Open Option",
      L"\\Technical Drawing",
      L"\\Performance",
      L"\\Assembly",
      L"\\Export Options",
  };
  const auto subkeys = OptionSubkeys();
  EXPECT_EQ(std::vector<std::wstring_view>(subkeys.begin(), subkeys.end()), kNames);
}

class CategoryStorageTest : public testing::Test {
 protected:
  CategoryStorageTest() {
    context_.installLanguages = {L"zh-cn", L"en-us"};
    context_.localRoot = L"L";
    context_.roamingRoot = L"R";
    context_.localFolder = L"C:\\Users\\u\\AppData\\Local\\ORMA\\draft";
  }

  std::vector<std::wstring> Folders(SettingCategory category) const {
    return CategoryFolders(Record(category), context_);
  }

  ProductContext context_;
};

using Paths = std::vector<std::wstring>;

TEST_F(CategoryStorageTest, RegistryCategoriesHaveNoFolders) {
  EXPECT_EQ(Folders(SettingCategory::Options), Paths{});
  EXPECT_EQ(Folders(SettingCategory::Register), Paths{});
}

TEST_F(CategoryStorageTest, RoamingCategoriesHaveOneFolderPerLanguageInListOrder) {
  EXPECT_EQ(Folders(SettingCategory::InterfaceLayout),
            (Paths{L"R\\zh-cn\\Customization", L"R\\en-us\\Customization"}));
  EXPECT_EQ(Folders(SettingCategory::DocumentTemplate),
            (Paths{L"R\\zh-cn\\Template", L"R\\en-us\\Template"}));
}

TEST_F(CategoryStorageTest, ShortcutKeysHaveOneFolderWithoutALanguage) {
  EXPECT_EQ(Folders(SettingCategory::ShortcutKey), Paths{L"L\\Customization"});
}

TEST_F(CategoryStorageTest, LocalCategoriesHaveTheirSubfolders) {
  const std::pair<SettingCategory, std::wstring> kSubfolders[] = {
      {SettingCategory::Bom3dConfiguration, L"\\3DBOM"},
      {SettingCategory::PropertyTemplates, L"\\PropertyTemplates\\NewTemplates"},
      {SettingCategory::CustomMaterials, L"\\materials"},
      {SettingCategory::CustomPartsLibrary, L"\\ToolBox"},
      {SettingCategory::CatalogLibrary, L"\\FavoriteCatalog"},
      {SettingCategory::SheetMetalLibrary, L"\\SheetMetal"},
      {SettingCategory::CosmeticThread, L"\\CosmeticThread"},
  };
  for (const auto& [category, subfolder] : kSubfolders) {
    EXPECT_EQ(Folders(category), (Paths{L"L\\zh-cn" + subfolder, L"L\\en-us" + subfolder}));
  }
}

TEST_F(CategoryStorageTest, DraftSettingsHaveARoamingTwinWithEveryLocalReplaced) {
  context_.localFolder = L"C:\\Users\\Local\\AppData\\Local\\ORMA\\draft";
  EXPECT_EQ(Folders(SettingCategory::Draft2dSettings),
            (Paths{L"C:\\Users\\Local\\AppData\\Local\\ORMA\\draft",
                   L"C:\\Users\\Roaming\\AppData\\Roaming\\ORMA\\draft"}));
}

TEST_F(CategoryStorageTest, WithoutLanguagesPerLanguageCategoriesHaveNoFolders) {
  context_.installLanguages.clear();
  EXPECT_EQ(Folders(SettingCategory::CustomMaterials), Paths{});
  EXPECT_EQ(Folders(SettingCategory::ShortcutKey).size(), 1u);
}

TEST(CategoryOffer, ExportOffers3dBomOnlyAfter2025) {
  const CategoryRecord& bom = Record(SettingCategory::Bom3dConfiguration);
  ProductContext context;
  const std::pair<const wchar_t*, bool> kVersions[] = {
      {L"2025", false}, {L"2026", true}, {L"2025.9", false}, {L"2026.1", true},
      {L"", false},     {L"x", false},   {L"2027", true}};
  for (const auto& [version, offered] : kVersions) {
    context.humanReadableVersion = version;
    EXPECT_EQ(IsOfferedOnExport(bom, context), offered) << testing::PrintToString(version);
    EXPECT_TRUE(IsOfferedOnReset(bom, context));
  }
}

TEST(CategoryOffer, CatalogLibraryBelongsToTheVantricBrand) {
  const CategoryRecord& catalog = Record(SettingCategory::CatalogLibrary);
  ProductContext context;
  context.brandFlag = 1;
  EXPECT_TRUE(IsOfferedOnExport(catalog, context));
  EXPECT_TRUE(IsOfferedOnReset(catalog, context));
  context.brandFlag = 0;
  EXPECT_FALSE(IsOfferedOnExport(catalog, context));
  EXPECT_FALSE(IsOfferedOnReset(catalog, context));
  EXPECT_EQ(static_cast<int>(SettingCategory::SheetMetalLibrary), 13);
}

TEST(CategoryOffer, AllOthersAreAlwaysOffered) {
  const ProductContext context;
  for (const CategoryRecord& record : CategoryTable()) {
    if (record.category == SettingCategory::Bom3dConfiguration ||
        record.category == SettingCategory::CatalogLibrary) {
      continue;
    }
    EXPECT_TRUE(IsOfferedOnExport(record, context));
    EXPECT_TRUE(IsOfferedOnReset(record, context));
  }
}

TEST(CategoryOffer, ImportOffersWhatThePackageMarksWithOne) {
  const auto machine = NewTestMachine();
  const std::wstring path = machine->ScratchFolder() + L"config.ini";
  machine->PutFile(path,
                   "[selected]\r\nOPTIONS=1\r\nRegister=0\r\nCatalog Library=1\r\n"
                   "Shortcut key=11\r\n");
  const auto offered = [&](SettingCategory category) {
    return IsOfferedOnImport(Record(category), *machine->Ports().profiles, path);
  };
  EXPECT_TRUE(offered(SettingCategory::Options));
  EXPECT_TRUE(offered(SettingCategory::CatalogLibrary));
  EXPECT_FALSE(offered(SettingCategory::Register));
  EXPECT_FALSE(offered(SettingCategory::ShortcutKey));
  EXPECT_FALSE(offered(SettingCategory::CosmeticThread));
}

TEST(CategoryOffer, ImportOffersNothingWithoutASelectedSection) {
  const auto machine = NewTestMachine();
  const std::wstring path = machine->ScratchFolder() + L"config.ini";
  machine->PutFile(path, "[Base]\r\nOptions=1\r\n");
  for (const CategoryRecord& record : CategoryTable()) {
    EXPECT_FALSE(IsOfferedOnImport(record, *machine->Ports().profiles, path));
    EXPECT_FALSE(IsOfferedOnImport(record, *machine->Ports().profiles, path + L".missing"));
  }
}

}  // namespace
}  // namespace carrovan
