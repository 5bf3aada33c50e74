#pragma once

#include "environment/wizard_state.h"
#include "package/import_report.h"
#include "package/registry_tool.h"
#include "platform/console.h"
#include "platform/xml_dom.h"
#include "rewrite/rewrite_ports.h"
#include "wizard/category_tree.h"

namespace carrovan {

// What an import works with. The package was chosen, the target version is the context's
// `selectedVersion`.
struct ImportRun {
  ProductContext& context;
  PackageState& package;
  const Machine& machine;
  RegistryTool& registryTool;
  XmlDom& dom;
  LineLog& log;
  WizardView& view;
  ImportReport& report;  // of all steps from the opening of the package on
};

RewritePorts RewritePortsOf(const ImportRun& run);

// What the finish page says after an import.
std::wstring ImportFinishText(const ProductContext& context);

// Applies the unpacked package: every leaf of the tree is either merged and put in place or taken
// out of the package, the registry files are imported, and what is then in the package is laid over
// the user's profile. Sets the finish text.
void ApplyPackage(const ImportRun& run, EditableCategoryTree& tree);

}  // namespace carrovan
