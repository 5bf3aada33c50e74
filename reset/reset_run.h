#pragma once

#include "environment/wizard_state.h"
#include "package/import_report.h"
#include "package/registry_tool.h"
#include "platform/category_tree.h"

namespace carrovan {

// What a reset works with. The context holds the version's folders (PrepareVersionFolders)
// and an empty staging folder.
struct ResetRun {
  ProductContext& context;
  const PackageState& package;
  const Machine& machine;
  RegistryTool& registryTool;
  WizardView& view;
};

// Resets every checked category of the tree: deletes its folders, which the product makes anew with
// its defaults, or restores its registry keys from the product's factory defaults. Sets the finish
// text.
ImportReport RunReset(const ResetRun& run, EditableCategoryTree& tree);

// "SOFTWARE\company\New User Settings\product version" under the machine's hive.
std::wstring DefaultKey(const ProductContext& context);

}  // namespace carrovan
