#include "package/export_run.h"

#include <algorithm>
#include <iterator>

#include "environment/category_tree_walk.h"
#include "environment/version_folders.h"
#include "package/export_findings.h"
#include "package/package_description.h"

namespace carrovan {
namespace {

SaveFileQuestion PackageFileQuestion() {
  return {.defaultExtension = L".ucex",
          .filter = L"User Configuration Files (*.ucex)|*.ucex|",
          .hideReadOnlyBox = true,
          .askBeforeOverwriting = true};
}

void AddCategory(const CategoryRecord& record, const ProductContext& context,
                 ExportSelection& selection) {
  selection.checked.push_back(record.category);
  auto& list = record.storage == CategoryStorage::kRoamingLanguage ? selection.categoryFolders
                                                                   : selection.furtherFolders;
  std::ranges::move(CategoryFolders(record, context), std::back_inserter(list));
}

void DropRegistryKeys(const CategoryRecord& record, ProductContext& context) {
  if (record.storage == CategoryStorage::kOptionKeys) context.optionKeys.clear();
  if (record.storage == CategoryStorage::kWholeKey) context.registerKeys.clear();
}

// The chosen path is taken at once, so that a path that cannot be written fails before the work,
// not after it. True when the file is new.
bool ReserveArchivePath(const Machine& machine, const std::wstring& archivePath) {
  if (machine.files.Exists(archivePath)) return false;
  return machine.files.CreateEmptyFile(archivePath) == kSystemOk;
}

PackageReport WriteReservedPackage(const ExportRun& run, const std::wstring& archivePath,
                                   bool reserved) {
  PackageReport report = WritePackage(run.context, run.machine, run.context.packageSources,
                                      archivePath, ArchivePurpose::kKeep);
  // An empty file would look like a package.
  if (reserved && report.outcome != ArchiveResult::kDone) {
    static_cast<void>(run.machine.files.RemoveFile(archivePath));
  }
  return report;
}

}  // namespace

std::optional<ExportSelection> CollectExportSelection(const CategoryTree& tree,
                                                      ProductContext& context) {
  ExportSelection selection;
  VisitLeaves(tree, tree.Root(), [&](CategoryTree::Item leaf) {
    const CategoryRecord* record = FindCategory(tree.ItemData(leaf));
    if (record == nullptr) return;
    if (tree.IsChecked(leaf)) {
      AddCategory(*record, context, selection);
    } else {
      DropRegistryKeys(*record, context);
    }
  });
  if (selection.checked.empty()) return std::nullopt;
  return selection;
}

void ExportRegistryKeys(ProductContext& context, RegistryTool& tool,
                        const std::vector<std::wstring>& keys) {
  std::vector<std::wstring> files;
  for (const std::wstring& key : keys) {
    files.push_back(RegistryFileOf(context, key));
    tool.RegExportKey(key, files.back());
  }
  std::ranges::move(files, std::back_inserter(context.packageSources));
}

void BuildPackageSources(ProductContext& context, RegistryTool& tool,
                         const ExportSelection& selection) {
  context.packageSources = {context.packageDescriptionPath};
  std::ranges::copy(selection.categoryFolders, std::back_inserter(context.packageSources));
  std::ranges::copy(selection.furtherFolders, std::back_inserter(context.packageSources));
  ExportRegistryKeys(context, tool, context.optionKeys);
  ExportRegistryKeys(context, tool, context.registerKeys);
}

std::optional<ExportReport> RunExport(const ExportRun& run) {
  ProductContext& context = run.context;
  FillRegistryKeyLists(context);

  const auto selection = CollectExportSelection(run.tree, context);
  if (!selection) {
    run.view.ShowMessage(std::wstring(Text(StringId::kSelectExportedSettings)));
    return std::nullopt;
  }
  WritePackageDescription(context, run.machine, selection->checked);

  const auto archivePath = run.view.ChooseSaveFile(PackageFileQuestion());
  if (!archivePath || archivePath->empty()) return std::nullopt;
  const bool reserved = ReserveArchivePath(run.machine, *archivePath);

  BuildPackageSources(context, run.registryTool, *selection);
  ExportReport report{*archivePath, WriteReservedPackage(run, *archivePath, reserved), {}, {}};
  FindWhatIsMissing(run, *selection, report);

  run.view.SetFinishText(std::wstring(Text(StringId::kExportedTo)) + *archivePath);
  return report;
}

}  // namespace carrovan
