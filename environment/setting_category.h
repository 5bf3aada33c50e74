#pragma once

#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "environment/product_context.h"
#include "environment/string_table.h"
#include "platform/profile_file.h"

namespace carrovan {

// The categories that a user picks from. The value is the category's identity: trees carry it as
// item data, and runs visit the categories in its order.
enum class SettingCategory : int {
  SelectAll = 1,  // the root of a tree, not a category
  Options = 2,
  Register = 3,
  InterfaceLayout = 4,
  DocumentTemplate = 5,
  ShortcutKey = 6,
  Bom3dConfiguration = 7,
  PropertyTemplates = 8,
  CustomMaterials = 9,
  CustomPartsLibrary = 10,
  Draft2dSettings = 11,
  CatalogLibrary = 12,
  SheetMetalLibrary = 13,
  CosmeticThread = 14,
};

// Where a category's data lives.
enum class CategoryStorage {
  kOptionKeys,       // the option subkeys of the live key
  kWholeKey,         // the live key with everything below it
  kRoamingLanguage,  // Roaming root + language + subfolder, once per language
  kLocalLanguage,    // Local root + language + subfolder, once per language
  kLocalSingle,      // Local root + subfolder
  kDraftFolder,      // the 2D drafting folder and its Roaming twin
};

// Where a category is offered beyond what is true for all.
enum class CategoryOffer {
  kAlways,
  kSince2026,     // on the export page only for releases after 2025
  kVantricBrand,  // on the export and reset pages only for the Vantric brand
};

struct CategoryRecord {
  SettingCategory category;
  StringId label;  // its text is also the category's key in a package's config.ini
  StringId description;
  CategoryStorage storage;
  std::wstring_view subfolder;  // with leading backslash; empty where storage has none
  CategoryOffer offer;
};

// The thirteen categories in the order of their values. Every run reads this table.
std::span<const CategoryRecord> CategoryTable();

// In the order of the table.
using CategorySet = std::set<SettingCategory>;

// Null for the root and for any value that is not a category.
const CategoryRecord* FindCategory(int value);

// Null when no category has this label; case does not matter.
const CategoryRecord* FindCategoryByLabel(std::wstring_view label);

// Subkeys of the live key that make up Options, each with a leading backslash, in visiting order.
std::span<const std::wstring_view> OptionSubkeys();

// The category's folders of the version in the context, in the order of its languages; empty for a
// category that lives in the registry.
std::vector<std::wstring> CategoryFolders(const CategoryRecord& record,
                                          const ProductContext& context);

bool IsOfferedOnExport(const CategoryRecord& record, const ProductContext& context);
bool IsOfferedOnReset(const CategoryRecord& record, const ProductContext& context);

// True when the package's description marks the category with "1", whatever the brand.
bool IsOfferedOnImport(const CategoryRecord& record, const ProfileReader& profiles,
                       const std::wstring& descriptionPath);

// Every category for which one of these holds.
CategorySet OfferedOnExport(const ProductContext& context);
CategorySet OfferedOnReset(const ProductContext& context);
CategorySet OfferedOnImport(const ProfileReader& profiles, const std::wstring& descriptionPath);

}  // namespace carrovan
