#include "package/export_run.h"

#include <algorithm>
#include <iterator>

#include "environment/category_tree_walk.h"
#include "environment/version_folders.h"
#include "package/export_findings.h"
#include "package/package_description.h"
#include "package/registry_file_check.h"
#include "package/run_folder.h"

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
// not after it. True when the file is new. A file that appears at this moment loses nothing.
bool ReserveArchivePath(const Machine& machine, const std::wstring& archivePath) {
  if (machine.files.Exists(archivePath)) return false;
  return machine.files.AppendBytes(archivePath, {}) == kSystemOk;
}

// An empty file would look like a package.
void GiveUpArchivePath(const Machine& machine, const std::wstring& archivePath) {
  bool isEmpty = true;
  const SystemCode code =
      machine.files.ReadInParts(archivePath, [&isEmpty](std::string_view part, std::uint64_t) {
        isEmpty = isEmpty && part.empty();
        return isEmpty;
      });
  if (code == kSystemOk && isEmpty) static_cast<void>(machine.files.RemoveFile(archivePath));
}

// Why the archive must not take its place, or an empty text.
std::wstring RefusalOfPackage(const ExportRun& run, const ExportSelection& selection,
                              const PackageReport& package, const ExportReport& report) {
  const std::size_t described = package.storedPerSource.front();
  if (described == 0 ||
      !IsDescriptionWritten(run.context, run.machine.profiles, selection.checked)) {
    return L"its description, " + run.context.packageDescriptionPath +
           L", could not be written and read back";
  }
  const bool holdsSettings =
      std::ranges::any_of(package.storedPerSource.begin() + 1, package.storedPerSource.end(),
                          [](std::size_t stored) { return stored > 0; });
  // A tool that is not waited for may still be writing.
  const bool lacksKeys =
      run.registryTool.IsDoneWithFiles() && !KeysWithoutFile(run, package).empty();
  const bool failed = lacksKeys || !package.skipped.empty() || !report.registryFileProblems.empty();
  return failed && !holdsSettings ? L"nothing of what is there could be stored" : L"";
}

void WriteReservedPackage(const ExportRun& run, const ExportSelection& selection, bool reserved,
                          ExportReport& report) {
  report.package =
      WritePackage(run.context, run.machine, run.context.packageSources, report.archivePath,
                   ArchivePurpose::kKeep, [&](const PackageReport& package) {
                     report.refusal = RefusalOfPackage(run, selection, package, report);
                     return report.refusal.empty();
                   });
  if (reserved && report.package.outcome != ArchiveResult::kDone) {
    GiveUpArchivePath(run.machine, report.archivePath);
  }
}

// What is wrong with the file of the last export. The tool writes none for a key that is not there.
std::optional<std::wstring> ProblemOfExport(const RegistryTool& tool, const FileReader& files,
                                            const std::wstring& file) {
  if (!tool.IsDoneWithFiles() || !files.Exists(file)) return std::nullopt;
  if (tool.LastExportFailed()) return L"is left of an export that failed";
  return WhatRegistryFileLacks(files, file);
}

// Has the tool write the file of a key; the result is what is wrong with the file. A tool that is
// waited for gets further attempts at a key that is there: on a busy machine it may end before it
// has written a word.
std::optional<std::wstring> ExportRegistryKey(const Machine& machine, RegistryTool& tool,
                                              const std::wstring& key, const std::wstring& file) {
  std::optional<std::wstring> problem;
  for (int attempt = 0; attempt < kRegistryToolAttempts; ++attempt) {
    // What an unpacked package left there would be taken for the key's own.
    static_cast<void>(ClearPath(machine.files, file));
    tool.RegExportKey(key, file);
    problem = ProblemOfExport(tool, machine.files, file);
    const bool isWhole = !problem && machine.files.Exists(file);
    if (!tool.IsDoneWithFiles() || isWhole || !IsKeyThere(machine.registry, key)) break;
  }
  return problem;
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

RegistryFileProblems ExportRegistryKeys(ProductContext& context, const Machine& machine,
                                        RegistryTool& tool, const std::vector<std::wstring>& keys) {
  RegistryFileProblems problems;
  std::vector<std::wstring> sources;
  for (const std::wstring& key : keys) {
    const std::wstring file = RegistryFileOf(context, key);
    if (const auto problem = ExportRegistryKey(machine, tool, key, file)) {
      problems.emplace(key, *problem);
    } else {
      sources.push_back(file);
    }
  }
  std::ranges::move(sources, std::back_inserter(context.packageSources));
  return problems;
}

RegistryFileProblems BuildPackageSources(ProductContext& context, const Machine& machine,
                                         RegistryTool& tool, const ExportSelection& selection) {
  context.packageSources = {context.packageDescriptionPath};
  std::ranges::copy(selection.categoryFolders, std::back_inserter(context.packageSources));
  std::ranges::copy(selection.furtherFolders, std::back_inserter(context.packageSources));
  auto problems = ExportRegistryKeys(context, machine, tool, context.optionKeys);
  problems.merge(ExportRegistryKeys(context, machine, tool, context.registerKeys));
  return problems;
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

  ExportReport report;
  report.archivePath = *archivePath;
  report.registryFileProblems =
      BuildPackageSources(context, run.machine, run.registryTool, *selection);
  WriteReservedPackage(run, *selection, reserved, report);
  FindWhatIsMissing(run, *selection, report);

  run.view.SetFinishText(std::wstring(Text(StringId::kExportedTo)) + *archivePath);
  return report;
}

}  // namespace carrovan
