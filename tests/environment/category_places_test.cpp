#include "environment/version_folders.h"

#include <gtest/gtest.h>

#include "tests/support/fakes.h"
#include "tests/support/test_machine.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr RegistryHive kUser = RegistryHive::kCurrentUser;

class CategoryPlacesTest : public testing::Test {
 protected:
  CategoryPlacesTest() {
    context_.companyShortName = L"Vantric";
    context_.productName = L"VANTRIC";
    context_.productVersion = L"28.0";
    context_.humanReadableVersion = L"2026";
    context_.installLanguages = {L"en-us", L"zh-CN"};
  }

  CategoryPlaces Places() {
    const Machine machine = machine_->Ports();
    const Machine ports = With<&Machine::folders>(machine, folders_);
    EXPECT_TRUE(PrepareVersionFolders(context_, ports));
    return CategoryPlaces(context_, ports);
  }

  static SettingCategory Whose(const CategoryRecord* record) {
    return record == nullptr ? SettingCategory::SelectAll : record->category;
  }

  std::unique_ptr<TestMachine> machine_ = NewTestMachine();
  FixedFolders folders_;
  ProductContext context_;
};

const std::wstring kData = L"C:\\Users\\u\\AppData\\";
constexpr SettingCategory kNobody = SettingCategory::SelectAll;

struct Row {
  const wchar_t* path;
  SettingCategory category;
};

TEST_F(CategoryPlacesTest, AFileIsThatOfTheFolderItLiesIn) {
  const CategoryPlaces places = Places();
  using enum SettingCategory;
  constexpr Row kRows[] = {
      {L"Roaming\\Vantric\\VANTRIC\\28.0\\en-us\\Customization\\a.xml", InterfaceLayout},
      {L"Roaming\\Vantric\\VANTRIC\\28.0\\zh-CN\\Template\\deep\\a.dot", DocumentTemplate},
      {L"Local\\Vantric\\VANTRIC\\28.0\\Customization\\a.xml", ShortcutKey},
      {L"Local\\Vantric\\VANTRIC\\28.0\\en-us\\3DBOM", Bom3dConfiguration},
      {L"Local\\Vantric\\VANTRIC\\28.0\\en-us\\PropertyTemplates\\NewTemplates\\a",
       PropertyTemplates},
      {L"Local\\Vantric\\VANTRIC\\28.0\\en-us\\materials\\a", CustomMaterials},
      {L"Local\\Vantric\\VANTRIC\\28.0\\en-us\\ToolBox\\a", CustomPartsLibrary},
      {L"Local\\Vantric\\VANTRIC\\28.0\\en-us\\FavoriteCatalog\\a", CatalogLibrary},
      {L"Local\\Vantric\\VANTRIC\\28.0\\en-us\\SheetMetal\\a", SheetMetalLibrary},
      {L"Local\\Vantric\\VANTRIC\\28.0\\en-us\\CosmeticThread\\a", CosmeticThread},
      {L"Local\\ORMA\\ORMA CAD TVRN-INT-VANTRIC 2026 (x64)\\26.0\\menu.UIK", Draft2dSettings},
      {L"Roaming\\ORMA\\ORMA CAD TVRN-INT-VANTRIC 2026 (x64)\\26.0\\a", Draft2dSettings},
      {L"Roaming\\26.0\\a", Draft2dSettings},
      {L"Local\\Vantric\\VANTRIC\\28.0\\en-us\\PropertyTemplates", kNobody},
      {L"Local\\Vantric\\VANTRIC\\28.0\\en-us", kNobody},
      {L"Local\\Vantric\\VANTRIC\\28.0", kNobody},
      {L"Local\\Vantric\\VANTRIC\\28.0\\en-us\\ToolBoxes\\a", kNobody},
      {L"Local\\Vantric\\VANTRIC\\27.0\\en-us\\ToolBox\\a", kNobody},
      {L"Local\\Vantric\\VANTRIC\\28.0\\fr-fr\\ToolBox\\a", kNobody},
      {L"Roaming\\Other\\a", kNobody},
  };
  for (const Row& row : kRows) {
    EXPECT_EQ(Whose(places.OfFile(kData + row.path)), row.category) << ToUtf8(row.path);
  }
  EXPECT_EQ(places.OfFile(L""), nullptr);
}

TEST_F(CategoryPlacesTest, NamesCompareWithoutRegardToCaseAndSeparator) {
  const CategoryPlaces places = Places();
  EXPECT_EQ(Whose(places.OfFile(
                L"c:/users/U/APPDATA\\\\local\\vantric\\vantric\\28.0\\EN-US\\toolbox\\")),
            SettingCategory::CustomPartsLibrary);
  EXPECT_EQ(Whose(places.OfKey(kUser, L"software\\\\VANTRIC\\vantric 28.0\\GENERAL")),
            SettingCategory::Options);
}

TEST_F(CategoryPlacesTest, OptionsLieWithinTheRegister) {
  const CategoryPlaces places = Places();
  const std::wstring live = LiveKey(context_);
  EXPECT_EQ(Whose(places.OfKey(kUser, live)), SettingCategory::Register);
  EXPECT_EQ(Whose(places.OfKey(kUser, live + L"\\Recent")), SettingCategory::Register);
  EXPECT_EQ(Whose(places.OfKey(kUser, live + L"\\Generals")), SettingCategory::Register);
  for (const std::wstring_view subkey : OptionSubkeys()) {
    const std::wstring key = live + std::wstring(subkey);
    EXPECT_EQ(Whose(places.OfKey(kUser, key)), SettingCategory::Options) << ToUtf8(key);
    EXPECT_EQ(Whose(places.OfKey(kUser, key + L"\\deep")), SettingCategory::Options);
  }
}

TEST_F(CategoryPlacesTest, OtherKeysAreNobodys) {
  const CategoryPlaces places = Places();
  const std::wstring live = LiveKey(context_);
  EXPECT_EQ(places.OfKey(RegistryHive::kLocalMachine, live), nullptr);
  EXPECT_EQ(places.OfKey(kUser, live + L"0"), nullptr);
  EXPECT_EQ(places.OfKey(kUser, L"SOFTWARE\\Vantric"), nullptr);
  EXPECT_EQ(places.OfKey(kUser, L""), nullptr);
}

TEST_F(CategoryPlacesTest, TheOtherBrandHasItsResetTwinInItsProductFolder) {
  context_.companyShortName = L"ORMA";
  const CategoryPlaces places = Places();
  const std::wstring twin = kData + L"Roaming\\ORMA\\ORMA CAD TVRN-INT 2026 (x64)\\26.0\\a";
  EXPECT_EQ(Whose(places.OfFile(twin)), SettingCategory::Draft2dSettings);
  EXPECT_EQ(places.OfFile(kData + L"Roaming\\26.0\\a"), nullptr);
}

TEST_F(CategoryPlacesTest, AnUnknownDraftingFolderIsNotEveryFolder) {
  context_.companyShortName = L"Another";
  const CategoryPlaces places = Places();
  EXPECT_EQ(places.OfFile(L"C:\\anything"), nullptr);
}

}  // namespace
}  // namespace carrovan
