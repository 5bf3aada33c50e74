#pragma once

#include <string>
#include <vector>

#include "platform/machine.h"

namespace carrovan {

// One product version found on the machine.
struct InstalledVersion {
  std::wstring internalVersion;  // registry version key name, for example "28.0"
};

// What the user wants to do.
enum class MigrationMode : int { kNone = 0, kExport = 1, kImport = 2, kReset = 3 };

// What the program knows of one installation of the CAD product and of the version that the user
// works on. Filled at start-up; the version fields change with the user's choice.
struct ProductContext {
  MigrationMode mode = MigrationMode::kNone;   // always the wizard state's own mode
  int brandFlag = 0;                           // 1 for company "Vantric", 0 for "ORMA"
  std::wstring companyShortName;               // first component of the registry key
  std::wstring productName;                    // second component, prefix of folder names
  std::wstring productVersion;                 // internal form
  std::wstring humanReadableVersion;           // year form
  std::wstring startupFolder;                  // folder of the product's executables
  std::vector<std::wstring> installLanguages;  // language tags, in folder order
  std::wstring defaultCustomizationFolder;     // empty when it cannot be derived
  std::wstring selectedVersion;                // year form of the version chosen in the wizard
  std::wstring localFolder;                    // 2D drafting Local folder
  std::wstring stagingFolder;                  // with trailing backslash
  std::wstring stagingLocalFolder;             // the package's copy of the 2D drafting Local folder
  std::vector<InstalledVersion> installedVersions;
  std::wstring registryRoot;                 // per-user key with its hive spelled out
  std::wstring roamingRoot;                  // the version's product folder, Roaming
  std::wstring localRoot;                    // the version's product folder, Local
  std::vector<std::wstring> optionKeys;      // full key paths exported for Options
  std::vector<std::wstring> registerKeys;    // and for Register
  std::vector<std::wstring> packageSources;  // files and folders to put into the package
  std::wstring packageDescriptionPath;       // staging folder + "config.ini"
};

// Fills the identity, brand, languages, default customization folder and staging Local folder.
// False for a company that makes no product this program knows (StringId::kCheckIniFile says so);
// what comes after the brand is then not filled.
[[nodiscard]] bool LoadProductContext(ProductContext& context, const Machine& machine);

// Makes another installed version the one to work on; `yearForm` is the version as the user sees
// it.
void SelectVersion(ProductContext& context, const std::wstring& yearForm);

// Two lower-case letters, or two lower-case letters, "-" and two letters of either case; ASCII
// only.
bool IsLanguageTag(std::wstring_view name);

}  // namespace carrovan
