#include "reset/reset_run.h"

#include <optional>
#include <utility>

#include "environment/setting_category.h"
#include "environment/string_table.h"
#include "environment/version_folders.h"
#include "package/put_in_place.h"

namespace carrovan {

KeyRestore RestoreKey(const std::wstring& defaultKey, const std::wstring& liveKey,
                      RegistryEditor& registry) {
  KeyRestore restore;
  restore.deleted = registry.DeleteTree(RegistryHive::kCurrentUser, liveKey);
  restore.copied = registry.CopyTree(RegistryHive::kLocalMachine, defaultKey,
                                     RegistryHive::kCurrentUser, liveKey);
  return restore;
}

namespace {

// Nothing when the user's key is now a copy of the defaults, or when there is neither.
std::optional<std::wstring> ProblemOf(const KeyRestore& restore, const std::wstring& key) {
  const bool wasThere = restore.deleted != kFileNotFound;
  if (restore.copied == kFileNotFound && !wasThere) return std::nullopt;
  if (restore.copied == kFileNotFound && restore.deleted == kSystemOk) {
    return key + L": no factory default: removed";
  }
  // What could not be deleted is still there under the defaults.
  const SystemCode code =
      wasThere && restore.deleted != kSystemOk ? restore.deleted : restore.copied;
  if (code == kSystemOk) return std::nullopt;
  return L"Not restored from the factory defaults: " + key + L": " + DescribeSystemCode(code);
}

void RestoreOrReport(const ResetRun& run, const std::wstring& subkey, RunReport& report) {
  const KeyRestore restore = RestoreKey(DefaultKey(run.context) + subkey,
                                        LiveKey(run.context) + subkey, *run.machine.registry);
  if (auto problem = ProblemOf(restore, RegistryRoot(run.context) + subkey)) {
    report.problems.push_back(std::move(*problem));
  }
}

void ResetCategory(const ResetRun& run, const CategoryRecord& record, RunReport& report) {
  switch (record.storage) {
    case CategoryStorage::kOptionKeys:
      for (const std::wstring_view subkey : OptionSubkeys()) {
        RestoreOrReport(run, std::wstring(subkey), report);
      }
      return;
    case CategoryStorage::kWholeKey:
      return RestoreOrReport(run, L"", report);
    case CategoryStorage::kDraftFolder:
      if (const auto twin = ResetDraftingTwin(run.context, *run.machine.folders)) {
        WipeOrReport(*run.machine.files, *twin, report);
      }
      return WipeOrReport(*run.machine.files, run.context.localFolder, report);
    default:
      for (const std::wstring& folder : CategoryFolders(record, run.context)) {
        WipeOrReport(*run.machine.files, folder, report);
      }
  }
}

}  // namespace

std::wstring DefaultKey(const ProductContext& context) {
  return L"SOFTWARE\\" + context.companyShortName + L"\\New User Settings\\" + context.productName +
         L" " + context.productVersion;
}

RunReport RunReset(const ResetRun& run, const CategorySet& chosen) {
  RunReport report;
  for (const SettingCategory category : OfferedOnReset(run.context)) {
    run.observer.OnCategory(category);
    const CategoryRecord& record = *FindCategory(static_cast<int>(category));
    if (chosen.contains(category)) ResetCategory(run, record, report);
  }
  PutInPlace(
      {run.context, run.package.applicationDataRoot, run.machine, run.registryTool, run.observer},
      report);
  return report;
}

std::wstring ResetFinishText(const ProductContext& context, const TextSource& texts) {
  return context.productName + L" " + context.humanReadableVersion + L" " +
         texts.Text(StringId::kHaveBeenReset);
}

}  // namespace carrovan
