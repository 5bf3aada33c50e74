#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "environment/setting_category.h"
#include "package/paced_registry_tool.h"
#include "package/package_writer.h"

namespace carrovan {

// What an export works with. The context holds the version's folders (PrepareVersionFolders) and a
// staging folder that exists; `packageDescriptionPath` lies in it.
struct ExportRun {
  ProductContext& context;
  const Machine& machine;
  PacedRegistryTool& registryTool;
  RunObserver& observer;
};

// Where the files of the chosen categories lie.
struct ExportSelection {
  std::vector<std::wstring> categoryFolders;  // Roaming, per language
  std::vector<std::wstring> furtherFolders;   // Local and 2D drafting
};

// Keys of which the registry tool's file is not stored, since it is not whole or the tool failed,
// and what is wrong with it ("ends inside a value").
using RegistryFileProblems = std::map<std::wstring, std::wstring>;

// How an export went.
struct ExportReport {
  std::wstring archivePath;
  PackageReport package;
  std::wstring refusal;  // why no package was put in place although one could be written, or empty
  RegistryFileProblems registryFileProblems;
  std::vector<std::wstring> missingKeys;          // keys that are there but gave no registry file
  std::vector<SettingCategory> emptyCategories;   // checked, but the user has nothing of them
  std::vector<SettingCategory> failedCategories;  // of which there is something, and nothing stored
};

// The folders of the categories. Empties the key lists of registry categories that are not chosen.
ExportSelection CollectExportSelection(const CategorySet& chosen, ProductContext& context);

// One registry file per key in the staging folder, each appended to `packageSources`. Where the
// registry tool is waited for, a file that is not whole is left out and given back with its key.
RegistryFileProblems ExportRegistryKeys(const ExportRun& run,
                                        const std::vector<std::wstring>& keys);

// Fills `packageSources`: the description, the selection's folders, then the registry files, which
// it has the registry tool write.
RegistryFileProblems BuildPackageSources(const ExportRun& run, const ExportSelection& selection);

// The whole export of the chosen categories into a package. An archive that was there before stays
// whole unless a finished one takes its place. It also stays when the description does not read
// back as written, and when nothing could be stored of what is there.
ExportReport RunExport(const ExportRun& run, const CategorySet& chosen,
                       const std::wstring& archivePath);

// What is reported when an export has run.
std::wstring ExportFinishText(const std::wstring& archivePath,
                              const TextSource& texts = EnglishTexts());

// The registry file of the staging folder that a key is exported to. The Register key has no option
// subkey in its path and is named after the product and its release.
std::wstring RegistryFileOf(const ProductContext& context, const std::wstring& key);

// True for a key of the current user that exists, even when it may not be read. `fullPath` begins
// with the hive's full name.
bool IsKeyThere(const RegistryReader& registry, const std::wstring& fullPath);

// Keys that are there, though the package holds no file of them.
std::vector<std::wstring> KeysWithoutFile(const ExportRun& run, const PackageReport& package);

// Compares what was asked for with what was stored and fills the report's missing keys and empty
// categories. An archive that was not written has no findings.
void FindWhatIsMissing(const ExportRun& run, const CategorySet& chosen, ExportReport& report);

}  // namespace carrovan
