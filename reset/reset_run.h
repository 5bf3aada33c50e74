#pragma once

#include <string>

#include "environment/wizard_state.h"
#include "package/paced_registry_tool.h"
#include "package/run_report.h"
#include "platform/registry.h"

namespace carrovan {

// How a key was restored, each step as kSystemOk or the system's number.
struct KeyRestore {
  SystemCode deleted = kSystemOk;  // kFileNotFound: the user had no such key
  SystemCode copied = kSystemOk;   // kFileNotFound: the product has no defaults for the key
};

// Puts the product's factory defaults in place of the user's settings: deletes the live key with
// all below it, then copies the default key over it. Without a default key the live key stays
// deleted and the product starts from its built-in defaults. Nothing is reported to the user.
[[nodiscard]] KeyRestore RestoreKey(const std::wstring& defaultKey, const std::wstring& liveKey,
                                    RegistryEditor& registry);

// What a reset works with. The context holds the version's folders (PrepareVersionFolders)
// and an empty staging folder.
struct ResetRun {
  ProductContext& context;
  const PackageState& package;
  const Machine& machine;
  PacedRegistryTool& registryTool;
  RunObserver& observer;
};

// Resets the chosen categories of those that a reset offers: deletes their folders, which the
// product makes anew with its defaults, or restores their registry keys from the product's factory
// defaults.
RunReport RunReset(const ResetRun& run, const CategorySet& chosen);

// What is reported when a reset has run.
std::wstring ResetFinishText(const ProductContext& context,
                             const TextSource& texts = EnglishTexts());

// "SOFTWARE\company\New User Settings\product version" under the machine's hive.
std::wstring DefaultKey(const ProductContext& context);

}  // namespace carrovan
