#include "package/export_findings.h"

#include <algorithm>
#include <map>

#include "platform/path_text.h"
#include "platform/text.h"

namespace carrovan {
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
      if (IsKeyThere(run.machine.registry, key)) missing.push_back(key);
    }
  }
  return missing;
}

void FindWhatIsMissing(const ExportRun& run, const ExportSelection& selection,
                       ExportReport& report) {
  if (report.package.outcome != ArchiveResult::kDone) return;
  const ProductContext& context = run.context;
  const StoredCounts counts = CountStored(context.packageSources, report.package);
  report.missingKeys = KeysWithoutFile(run, report.package);
  for (const SettingCategory category : selection.checked) {
    const auto sources = SourcesOf(*FindCategory(static_cast<int>(category)), context);
    if (!AnyStored(counts, sources) && !AnyFailed(report, context, sources)) {
      report.emptyCategories.push_back(category);
    }
  }
}

}  // namespace carrovan
