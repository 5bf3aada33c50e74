#include "wizard/wizard_export.h"

#include "environment/version_folders.h"
#include "package/export_run.h"
#include "package/staging_folder.h"
#include "wizard/run_progress.h"
#include "wizard/run_summary.h"

namespace carrovan {
namespace {

// The 27 registry keys of a version and the files of an ordinary user.
constexpr std::size_t kExpectedItems = 400;

SaveFileQuestion PackageFileQuestion() {
  return {.defaultExtension = L".ucex",
          .filter = L"User Configuration Files (*.ucex)|*.ucex|",
          .hideReadOnlyBox = true,
          .askBeforeOverwriting = true};
}

// Nothing when no file was chosen or none of the categories is ticked.
std::optional<ExportReport> ExportTicked(const WizardParts& parts) {
  if (!EnsureStagingFolder(parts)) return std::nullopt;
  CategoryTree& tree = parts.frame.Tree(WizardPage::kExportCategories);
  const CategorySet chosen = CheckedCategories(tree);
  if (chosen.empty()) {
    ShowMessage(parts, StringId::kSelectExportedSettings);
    return std::nullopt;
  }
  const auto archivePath = parts.frame.ChooseSaveFile(PackageFileQuestion());
  if (!archivePath || archivePath->empty()) return std::nullopt;
  RunProgress progress(parts.frame, kExpectedItems);
  PacedRegistryTool tool(*parts.machine.registryTool, *parts.machine.clock,
                         RegistryToolPace::kFixedPause);
  ExportReport report =
      RunExport({parts.context, parts.machine, tool, progress}, chosen, *archivePath);
  parts.frame.SetFinishText(ExportFinishText(*archivePath, parts.texts));
  FinishDetails details;
  details.lines = SummaryOfExport(report, OfferedOnExport(parts.context), chosen, parts.texts);
  if (WhyNotWritten(report).empty()) details.packagePath = *archivePath;
  parts.frame.SetFinishDetails(details);
  return report;
}

}  // namespace

void TakeVersionToExport(const WizardParts& parts) {
  const auto year = parts.frame.SelectedVersion(WizardPage::kVersion);
  if (year) SelectShownVersion(parts.context, *year);
}

bool HasVersionFolders(const WizardParts& parts) {
  if (PrepareVersionFolders(parts.context, parts.machine)) return true;
  ShowRefusal(parts, RunRefusal::kFoldersMissing);
  return false;
}

bool EnterExportCategories(const WizardParts& parts) {
  if (!HasVersionFolders(parts)) return false;
  BuildCategoryTree(parts.frame.Tree(WizardPage::kExportCategories), OfferedOnExport(parts.context),
                    parts.texts);
  return true;
}

bool Export(const WizardParts& parts) { return ExportTicked(parts).has_value(); }

void BackUpEverything(const WizardParts& parts) {
  if (EnterExportCategories(parts)) {
    if (const auto report = ExportTicked(parts)) {
      const std::wstring why = WhyNotWritten(*report);
      parts.frame.SetBackupText(
          why.empty() ? parts.texts.Filled(StringId::kBackupWritten, {report->archivePath})
                      : parts.texts.Filled(StringId::kBackupNotWritten, {why}));
    }
  }
  RenewStagingFolder(parts.context, parts.machine);
}

}  // namespace carrovan
