#include "reset/reset_run.h"

#include "environment/category_tree_walk.h"
#include "environment/setting_category.h"
#include "environment/string_table.h"
#include "environment/version_folders.h"
#include "package/overlay.h"
#include "reset/key_restore.h"

namespace carrovan {
namespace {

void RestoreOrReport(const ResetRun& run, const std::wstring& subkey, ImportReport& report) {
  const std::wstring liveKey = LiveKey(run.context) + subkey;
  const SystemCode code =
      RestoreKey(DefaultKey(run.context) + subkey, liveKey, run.machine.registryEditor);
  if (code == kSystemOk) return;
  report.problems.push_back(L"Not restored from the factory defaults: " + liveKey + L": " +
                            DescribeSystemCode(code));
}

void ResetCategory(const ResetRun& run, const CategoryRecord& record, ImportReport& report) {
  switch (record.storage) {
    case CategoryStorage::kOptionKeys:
      for (const std::wstring_view subkey : OptionSubkeys()) {
        RestoreOrReport(run, std::wstring(subkey), report);
      }
      return;
    case CategoryStorage::kWholeKey:
      return RestoreOrReport(run, L"", report);
    case CategoryStorage::kDraftFolder:
      if (const auto twin = ResetDraftingTwin(run.context, run.machine.folders)) {
        WipeOrReport(run.machine.files, *twin, report);
      }
      return WipeOrReport(run.machine.files, run.context.localFolder, report);
    default:
      for (const std::wstring& folder : CategoryFolders(record, run.context)) {
        WipeOrReport(run.machine.files, folder, report);
      }
  }
}

std::wstring ResetFinishText(const ProductContext& context) {
  return context.productName + L" " + context.humanReadableVersion + L" " +
         std::wstring(Text(StringId::kHaveBeenReset));
}

}  // namespace

std::wstring DefaultKey(const ProductContext& context) {
  return L"SOFTWARE\\" + context.companyShortName + L"\\New User Settings\\" + context.productName +
         L" " + context.productVersion;
}

ImportReport RunReset(const ResetRun& run, EditableCategoryTree& tree) {
  ImportReport report;
  WalkLeaves(tree, tree.Root(), [&](CategoryTree::Item leaf) {
    const CategoryRecord* record = FindCategory(tree.ItemData(leaf));
    if (record != nullptr && tree.IsChecked(leaf)) ResetCategory(run, *record, report);
  });
  ApplyOverlay(
      {run.context, run.package.applicationDataRoot, run.machine, run.registryTool, run.view},
      report);
  run.view.SetFinishText(ResetFinishText(run.context));
  return report;
}

}  // namespace carrovan
