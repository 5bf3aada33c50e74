#include "package/import_run.h"

#include "environment/category_tree_walk.h"
#include "environment/string_table.h"
#include "package/category_import.h"
#include "package/overlay.h"

namespace carrovan {

RewritePorts RewritePortsOf(const ImportRun& run) {
  return {run.machine.files, run.machine.user, run.machine.codePage, run.log};
}

std::wstring ImportFinishText(const ProductContext& context) {
  return std::wstring(Text(StringId::kImportedTo)) + context.productName + L" " +
         context.selectedVersion + L".";
}

void ApplyPackage(const ImportRun& run, EditableCategoryTree& tree) {
  WalkLeaves(tree, tree.Root(), [&](CategoryTree::Item leaf) {
    ApplyCategory(run, tree.ItemData(leaf), tree.IsChecked(leaf));
  });
  ApplyOverlay(
      {run.context, run.package.applicationDataRoot, run.machine, run.registryTool, run.view},
      run.report);
  run.view.SetFinishText(ImportFinishText(run.context));
}

}  // namespace carrovan
