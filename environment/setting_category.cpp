#include "environment/setting_category.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "environment/installed_versions.h"
#include "text/text.h"

namespace carrovan {
namespace {

using enum SettingCategory;
using enum CategoryStorage;
using enum CategoryOffer;

// The order is that of the trees. 3DBOM stands before Property Templates although its label's
// number is the higher one.
constexpr CategoryRecord kCategories[] = {
    {Options, StringId::kOptionsLabel, StringId::kOptionsDescription, kOptionKeys, L"", kAlways},
    {Register, StringId::kRegisterLabel, StringId::kRegisterDescription, kWholeKey, L"", kAlways},
    {InterfaceLayout, StringId::kInterfaceLayoutLabel, StringId::kInterfaceLayoutDescription,
     kRoamingLanguage, L"\\Customization", kAlways},
    {DocumentTemplate, StringId::kDocumentTemplateLabel, StringId::kDocumentTemplateDescription,
     kRoamingLanguage, L"\\Template", kAlways},
    {ShortcutKey, StringId::kShortcutKeyLabel, StringId::kShortcutKeyDescription, kLocalSingle,
     L"\\Customization", kAlways},
    {Bom3dConfiguration, StringId::kBom3dConfigurationLabel,
     StringId::kBom3dConfigurationDescription, kLocalLanguage, L"\\3DBOM", kSince2026},
    {PropertyTemplates, StringId::kPropertyTemplatesLabel, StringId::kPropertyTemplatesDescription,
     kLocalLanguage, L"\\PropertyTemplates\\NewTemplates", kAlways},
    {CustomMaterials, StringId::kCustomMaterialsLabel, StringId::kCustomMaterialsDescription,
     kLocalLanguage, L"\\materials", kAlways},
    {CustomPartsLibrary, StringId::kCustomPartsLibraryLabel,
     StringId::kCustomPartsLibraryDescription, kLocalLanguage, L"\\ToolBox", kAlways},
    {Draft2dSettings, StringId::kDraft2dSettingsLabel, StringId::kDraft2dSettingsDescription,
     kDraftFolder, L"", kAlways},
    {CatalogLibrary, StringId::kCatalogLibraryLabel, StringId::kCatalogLibraryDescription,
     kLocalLanguage, L"\\FavoriteCatalog", kVantricBrand},
    {SheetMetalLibrary, StringId::kSheetMetalLibraryLabel, StringId::kSheetMetalLibraryDescription,
     kLocalLanguage, L"\\SheetMetal", kAlways},
    {CosmeticThread, StringId::kCosmeticThreadLabel, StringId::kCosmeticThreadDescription,
     kLocalLanguage, L"\\CosmeticThread", kAlways},
};

constexpr std::wstring_view kOptionSubkeys[] = {
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

// The release year after which the export page offers the categories that came with 2026.
constexpr double kLastYearWithout3dBom = 2025;

// The values of the table are consecutive.
constexpr int kFirstValue = static_cast<int>(Options);
constexpr int kLastValue = static_cast<int>(CosmeticThread);

std::vector<std::wstring> PerLanguage(const std::wstring& root, const CategoryRecord& record,
                                      const ProductContext& context) {
  std::vector<std::wstring> folders;
  for (const std::wstring& language : context.installLanguages) {
    folders.push_back(root + L"\\" + language + std::wstring(record.subfolder));
  }
  return folders;
}

template <typename Test>
CategorySet CategoriesWhere(Test test) {
  CategorySet categories;
  for (const CategoryRecord& record : kCategories) {
    if (test(record)) categories.insert(record.category);
  }
  return categories;
}

}  // namespace

std::span<const CategoryRecord> CategoryTable() { return kCategories; }

const CategoryRecord* FindCategory(int value) {
  if (value < kFirstValue || value > kLastValue) return nullptr;
  return &kCategories[value - kFirstValue];
}

const CategoryRecord* FindCategoryByLabel(std::wstring_view label) {
  const auto at = std::find_if(std::begin(kCategories), std::end(kCategories),
                               [label](const CategoryRecord& record) {
                                 return EqualsIgnoringAsciiCase(Text(record.label), label);
                               });
  return at == std::end(kCategories) ? nullptr : &*at;
}

std::span<const std::wstring_view> OptionSubkeys() { return kOptionSubkeys; }

std::vector<std::wstring> CategoryFolders(const CategoryRecord& record,
                                          const ProductContext& context) {
  switch (record.storage) {
    case kOptionKeys:
    case kWholeKey:
      return {};
    case kRoamingLanguage:
      return PerLanguage(context.roamingRoot, record, context);
    case kLocalLanguage:
      return PerLanguage(context.localRoot, record, context);
    case kLocalSingle:
      return {context.localRoot + std::wstring(record.subfolder)};
    case kDraftFolder:
      return {context.localFolder, ReplaceAll(context.localFolder, L"Local", L"Roaming")};
  }
  return {};
}

bool IsOfferedOnExport(const CategoryRecord& record, const ProductContext& context) {
  if (record.offer != kSince2026) return IsOfferedOnReset(record, context);
  return std::trunc(LeadingNumber(context.humanReadableVersion)) > kLastYearWithout3dBom;
}

bool IsOfferedOnReset(const CategoryRecord& record, const ProductContext& context) {
  return record.offer != kVantricBrand || context.brandFlag == 1;
}

bool IsOfferedOnImport(const CategoryRecord& record, const ProfileReader& profiles,
                       const std::wstring& descriptionPath) {
  const std::wstring label(Text(record.label));
  return profiles.ReadValue(L"Selected", label, descriptionPath) == L"1";
}

CategorySet OfferedOnExport(const ProductContext& context) {
  return CategoriesWhere(
      [&](const CategoryRecord& record) { return IsOfferedOnExport(record, context); });
}

CategorySet OfferedOnReset(const ProductContext& context) {
  return CategoriesWhere(
      [&](const CategoryRecord& record) { return IsOfferedOnReset(record, context); });
}

CategorySet OfferedOnImport(const ProfileReader& profiles, const std::wstring& descriptionPath) {
  return CategoriesWhere([&](const CategoryRecord& record) {
    return IsOfferedOnImport(record, profiles, descriptionPath);
  });
}

}  // namespace carrovan
