#include "package/import_run.h"

#include "environment/string_table.h"
#include "package/category_import.h"
#include "package/overlay.h"
#include "package/staging_folder.h"
#include "text/path_text.h"
#include "wizard/category_tree.h"

namespace carrovan {

RewritePorts RewritePortsOf(const ImportRun& run) {
  return {run.machine.files, run.machine.user, run.machine.codePage, run.log};
}

std::wstring ImportFinishText(const ProductContext& context) {
  return std::wstring(Text(StringId::kImportedTo)) + context.productName + L" " +
         context.selectedVersion + L".";
}

void ApplyPackage(const ImportRun& run, EditableCategoryTree& tree) {
  // From here on the staging folder may hold the only copy of what is merged and taken away.
  KeepRunFolder(run.machine.files, WithoutTrailingBackslashes(run.context.stagingFolder));
  WalkLeaves(tree, tree.Root(), [&](CategoryTree::Item leaf) {
    ApplyCategory(run, tree.ItemData(leaf), tree.IsChecked(leaf));
  });
  ApplyOverlay(
      {run.context, run.package.applicationDataRoot, run.machine, run.registryTool, run.view},
      run.report);
  run.view.SetFinishText(ImportFinishText(run.context));
}

}  // namespace carrovan
