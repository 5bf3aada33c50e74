#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "environment/product_context.h"
#include "environment/setting_category.h"
#include "platform/machine.h"

namespace carrovan {

// Where the settings of one product version lie. The folder names are the product's own; the
// release of 2025 keeps its 2D drafting settings in the folder of 2024, subfolder "25.0".

// "HKEY_CURRENT_USER\SOFTWARE\company\product version". The per-user key has the version behind a
// blank in the product's component, unlike the machine key, which has it as a subkey.
std::wstring RegistryRoot(const ProductContext& context);

// The same key without its hive's name.
std::wstring LiveKey(const ProductContext& context);

// Fills `localFolder` for `selectedVersion`, its version subfolder included: the only subfolder
// found there, otherwise the last two characters of the version and ".0". Left as it was when the
// system does not know the user's Local folder.
void BuildLocalFolder(ProductContext& context, const Machine& machine);

// Fills `stagingLocalFolder` for a year: the same folder below the staging folder's "Local",
// without a version subfolder. Left as it was for an unknown company.
void BuildStagingLocalFolder(ProductContext& context, const std::wstring& year);

// The same path below the user's Roaming folder; nothing for a path that is not below the Local one
// or when the system does not know one of them.
std::optional<std::wstring> RoamingTwin(const std::wstring& localPath, const KnownFolders& folders);

// The Roaming half of the 2D drafting settings that a reset takes away. It is named by the last two
// digits of the year, and only one brand has a product folder of its own around it. Nothing when
// the system does not know the Roaming folder.
std::optional<std::wstring> ResetDraftingTwin(const ProductContext& context,
                                              const KnownFolders& folders);

// Fills the registry root, both key lists, both product folders and `localFolder` (without version
// subfolder) of the version at hand, as an export needs them. False when the product is not known
// or the system does not know the user's folders.
bool PrepareVersionFolders(ProductContext& context, const Machine& machine);

// Fills both key lists from `registryRoot`.
void FillRegistryKeyLists(ProductContext& context);

// States whose a file or a registry key is: the reverse of where the categories of a version lie. A
// folder and a key belong to a category together with all that is below; of two places of which one
// lies in the other, the inner one counts. Names compare without regard to case.
class CategoryPlaces {
 public:
  // The context holds the version's folders (PrepareVersionFolders).
  CategoryPlaces(const ProductContext& context, const Machine& machine);

  // Null when the path is no category's. Either separator; the path is taken as it is written, "."
  // and ".." in it are names.
  const CategoryRecord* OfFile(const std::wstring& path) const;

  // The key path is relative to the hive.
  const CategoryRecord* OfKey(RegistryHive hive, const std::wstring& keyPath) const;

 private:
  using Components = std::vector<std::u16string>;  // folded names
  using Places = std::map<Components, const CategoryRecord*>;

  static Components Split(const std::wstring& path);
  static const CategoryRecord* Innermost(const Places& places, Components path);

  Places folders_;
  Places userKeys_;
};

}  // namespace carrovan
