#include "package/export_run.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <memory>
#include <utility>

#include "environment/string_table.h"
#include "environment/version_folders.h"
#include "package/package_description.h"
#include "package/registry_file_scan.h"
#include "package/staging_folder.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

void AddCategory(const CategoryRecord& record, const ProductContext& context,
                 ExportSelection& selection) {
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
  if (machine.files->Exists(archivePath)) return false;
  return machine.files->AppendBytes(archivePath, {}) == kSystemOk;
}

// An empty file would look like a package.
void GiveUpArchivePath(const Machine& machine, const std::wstring& archivePath) {
  bool isEmpty = true;
  const SystemCode code =
      machine.files->ReadInParts(archivePath, [&isEmpty](std::string_view part, std::uint64_t) {
        isEmpty = isEmpty && part.empty();
        return isEmpty;
      });
  if (code == kSystemOk && isEmpty) static_cast<void>(machine.files->RemoveFile(archivePath));
}

// Why the archive must not take its place, or an empty text.
std::wstring RefusalOfPackage(const ExportRun& run, const CategorySet& chosen,
                              const PackageReport& package, const ExportReport& report) {
  const std::size_t described = package.storedPerSource.front();
  if (described == 0 || !IsDescriptionWritten(run.context, *run.machine.profiles, chosen)) {
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

void WriteReservedPackage(const ExportRun& run, const CategorySet& chosen, bool reserved,
                          ExportReport& report) {
  report.package =
      WritePackage(run.context, run.machine, run.context.packageSources, report.archivePath,
                   ArchivePurpose::kKeep, run.observer, [&](const PackageReport& package) {
                     report.refusal = RefusalOfPackage(run, chosen, package, report);
                     return report.refusal.empty();
                   });
  if (reserved && report.package.outcome != ArchiveResult::kDone) {
    GiveUpArchivePath(run.machine, report.archivePath);
  }
}

// What is wrong with the file of the last export. The tool writes none for a key that is not there.
std::optional<std::wstring> ProblemOfExport(const PacedRegistryTool& tool, const FileReader& files,
                                            const std::wstring& file) {
  if (!tool.IsDoneWithFiles() || !files.Exists(file)) return std::nullopt;
  if (tool.LastExportFailed()) return L"is left of an export that failed";
  return WhatRegistryFileLacks(files, file);
}

// The export of a key, of which the first attempt runs already.
struct KeyExport {
  std::wstring key;
  std::wstring file;
  std::unique_ptr<RunningTool> running;
};

std::unique_ptr<RunningTool> StartAttempt(const ExportRun& run, const std::wstring& key,
                                          const std::wstring& file) {
  // What an unpacked package left there would be taken for the key's own.
  static_cast<void>(ClearPath(*run.machine.files, file));
  return run.registryTool.StartExport(key, file);
}

// Starts the tool for the keys from one on, for as many as may run at a time. No two of them write
// one file.
std::vector<KeyExport> StartExports(const ExportRun& run, const std::vector<std::wstring>& keys,
                                    std::size_t first) {
  std::vector<KeyExport> exports;
  for (std::size_t i = first; i < keys.size() && exports.size() < run.registryTool.ExportsAtATime();
       ++i) {
    const std::wstring file = RegistryFileOf(run.context, keys[i]);
    if (std::ranges::any_of(
            exports, [&](const KeyExport& other) { return CompareNames(other.file, file) == 0; })) {
      break;
    }
    run.observer.OnItem(keys[i]);
    exports.push_back({keys[i], file, StartAttempt(run, keys[i], file)});
  }
  return exports;
}

// Has the tool write the file of a key; the result is what is wrong with the file. A tool that is
// waited for gets further attempts at a key that is there: on a busy machine it may end before it
// has written a word.
std::optional<std::wstring> FinishExport(const ExportRun& run, KeyExport started) {
  const auto& [key, file, running] = started;
  const FileSystem& files = *run.machine.files;
  PacedRegistryTool& tool = run.registryTool;
  std::optional<std::wstring> problem;
  for (int attempt = 0; attempt < kRegistryToolAttempts; ++attempt) {
    if (attempt > 0) started.running = StartAttempt(run, key, file);
    tool.FinishExport(std::move(started.running));
    problem = ProblemOfExport(tool, files, file);
    const bool isWhole = !problem && files.Exists(file);
    if (!tool.IsDoneWithFiles() || isWhole || !IsKeyThere(*run.machine.registry, key)) break;
  }
  return problem;
}

}  // namespace

ExportSelection CollectExportSelection(const CategorySet& chosen, ProductContext& context) {
  ExportSelection selection;
  for (const CategoryRecord& record : CategoryTable()) {
    if (chosen.contains(record.category)) {
      AddCategory(record, context, selection);
    } else {
      DropRegistryKeys(record, context);
    }
  }
  return selection;
}

RegistryFileProblems ExportRegistryKeys(const ExportRun& run,
                                        const std::vector<std::wstring>& keys) {
  RegistryFileProblems problems;
  std::vector<std::wstring> sources;
  for (std::size_t first = 0; first < keys.size();) {
    auto exports = StartExports(run, keys, first);
    first += exports.size();
    for (KeyExport& started : exports) {
      const std::wstring key = started.key;
      std::wstring file = started.file;
      if (const auto problem = FinishExport(run, std::move(started))) {
        problems.emplace(key, *problem);
      } else {
        sources.push_back(std::move(file));
      }
    }
  }
  std::ranges::move(sources, std::back_inserter(run.context.packageSources));
  return problems;
}

RegistryFileProblems BuildPackageSources(const ExportRun& run, const ExportSelection& selection) {
  ProductContext& context = run.context;
  context.packageSources = {context.packageDescriptionPath};
  std::ranges::copy(selection.categoryFolders, std::back_inserter(context.packageSources));
  std::ranges::copy(selection.furtherFolders, std::back_inserter(context.packageSources));
  auto problems = ExportRegistryKeys(run, context.optionKeys);
  problems.merge(ExportRegistryKeys(run, context.registerKeys));
  return problems;
}

ExportReport RunExport(const ExportRun& run, const CategorySet& chosen,
                       const std::wstring& archivePath) {
  FillRegistryKeyLists(run.context);
  const ExportSelection selection = CollectExportSelection(chosen, run.context);
  WritePackageDescription(run.context, run.machine, chosen);
  const bool reserved = ReserveArchivePath(run.machine, archivePath);

  ExportReport report;
  report.archivePath = archivePath;
  report.registryFileProblems = BuildPackageSources(run, selection);
  WriteReservedPackage(run, chosen, reserved, report);
  FindWhatIsMissing(run, chosen, report);
  return report;
}

std::wstring ExportFinishText(const std::wstring& archivePath, const TextSource& texts) {
  return texts.Text(StringId::kExportedTo) + archivePath;
}

namespace {

using StoredCounts = std::map<std::wstring, std::size_t>;

StoredCounts CountStored(const std::vector<std::wstring>& sources, const PackageReport& package) {
  StoredCounts counts;
  for (std::size_t i = 0; i < sources.size(); ++i) counts[sources[i]] += package.storedPerSource[i];
  return counts;
}

bool AnyStored(const StoredCounts& counts, const std::vector<std::wstring>& sources) {
  return std::ranges::any_of(sources, [&](const std::wstring& source) {
    const auto at = counts.find(source);
    return at != counts.end() && at->second > 0;
  });
}

// Everything in the package sources that belongs to a category.
std::vector<std::wstring> SourcesOf(const CategoryRecord& record, const ProductContext& context) {
  std::vector<std::wstring> sources = CategoryFolders(record, context);
  const auto addFilesOf = [&](const std::vector<std::wstring>& keys) {
    for (const std::wstring& key : keys) sources.push_back(RegistryFileOf(context, key));
  };
  if (record.storage == CategoryStorage::kOptionKeys) addFilesOf(context.optionKeys);
  if (record.storage == CategoryStorage::kWholeKey) addFilesOf(context.registerKeys);
  return sources;
}

// Sources of which something was there and could not be stored, which the report names already.
bool AnyFailed(const ExportReport& report, const ProductContext& context,
               const std::vector<std::wstring>& sources) {
  std::vector<std::wstring> failed;
  for (const SkippedItem& item : report.package.skipped) failed.push_back(item.path);
  for (const std::wstring& key : report.missingKeys) failed.push_back(RegistryFileOf(context, key));
  for (const auto& [key, problem] : report.registryFileProblems) {
    failed.push_back(RegistryFileOf(context, key));
  }
  return std::ranges::any_of(sources, [&](const std::wstring& source) {
    return std::ranges::any_of(failed,
                               [&](const std::wstring& path) { return path.starts_with(source); });
  });
}

}  // namespace

std::wstring RegistryFileOf(const ProductContext& context, const std::wstring& key) {
  const auto subkey = std::ranges::find_if(
      OptionSubkeys(), [&](std::wstring_view candidate) { return Contains(key, candidate); });
  const std::wstring name = subkey == OptionSubkeys().end()
                                ? context.productName + context.humanReadableVersion
                                : std::wstring(subkey->substr(1));
  return context.stagingFolder + name + L".reg";
}

bool IsKeyThere(const RegistryReader& registry, const std::wstring& fullPath) {
  const std::wstring path = fullPath.substr(fullPath.find(L'\\') + 1);
  if (registry.CanOpenKey(RegistryHive::kCurrentUser, path)) return true;
  // One that may not be read is still listed by its parent.
  const auto siblings = registry.SubkeyNames(RegistryHive::kCurrentUser, RemoveFileSpec(path));
  const std::wstring name = FileNameOf(path);
  return siblings && std::ranges::any_of(*siblings, [&](const std::wstring& sibling) {
           return CompareNames(sibling, name) == 0;
         });
}

std::vector<std::wstring> KeysWithoutFile(const ExportRun& run, const PackageReport& package) {
  const ProductContext& context = run.context;
  const StoredCounts counts = CountStored(context.packageSources, package);
  std::vector<std::wstring> missing;
  for (const auto* keys : {&context.optionKeys, &context.registerKeys}) {
    for (const std::wstring& key : *keys) {
      if (AnyStored(counts, {RegistryFileOf(context, key)})) continue;
      if (IsKeyThere(*run.machine.registry, key)) missing.push_back(key);
    }
  }
  return missing;
}

void FindWhatIsMissing(const ExportRun& run, const CategorySet& chosen, ExportReport& report) {
  if (report.package.outcome != ArchiveResult::kDone) return;
  const ProductContext& context = run.context;
  const StoredCounts counts = CountStored(context.packageSources, report.package);
  report.missingKeys = KeysWithoutFile(run, report.package);
  for (const SettingCategory category : chosen) {
    const auto sources = SourcesOf(*FindCategory(static_cast<int>(category)), context);
    if (AnyStored(counts, sources)) continue;
    const bool isEmpty = !AnyFailed(report, context, sources);
    (isEmpty ? report.emptyCategories : report.failedCategories).push_back(category);
  }
}

}  // namespace carrovan
