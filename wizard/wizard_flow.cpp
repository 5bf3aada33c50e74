#include "wizard/wizard_flow.h"

#include <algorithm>

#include "environment/installed_versions.h"
#include "environment/version_folders.h"
#include "package/export_run.h"
#include "package/package_inspection.h"
#include "package/staging_folder.h"
#include "text/path_text.h"
#include "wizard/category_tree.h"
#include "wizard/wizard_frame.h"

namespace carrovan {

namespace {

// Places in the sequences of pages. Export and import have their categories at the same one.
constexpr int kStartPlace = 0;
constexpr int kVersionPlace = 1;
constexpr int kPathPlace = 1;
constexpr int kCategoriesPlace = 2;
constexpr int kFinishPlace = 3;
constexpr int kResetCategoriesPlace = 1;
constexpr int kResetFinishPlace = 2;

// One step past the finish page, which shows it with fewer buttons enabled.
constexpr int kBeyondFinishPlace = 4;
constexpr int kBeyondResetFinishPlace = 3;

void ShowMessage(const WizardParts& parts, StringId id) {
  parts.frame.ShowMessage(std::wstring(Text(id)));
}

// The folder may have been deleted by a run, or by somebody who cleans up.
bool EnsureStagingFolder(const WizardParts& parts) {
  const std::wstring& folder = parts.context.stagingFolder;
  if (!folder.empty() && parts.machine.files.IsFolder(RemoveFileSpec(folder))) return true;
  return RenewStagingFolder(parts.context, parts.machine);
}

bool TellUnlessMade(const WizardParts& parts, bool hasStagingFolder) {
  if (!hasStagingFolder) parts.frame.ShowMessage(L"No folder can be made in the temporary path");
  return hasStagingFolder;
}

// Without its folders known, a run would look for them at the root of a drive.
bool HasVersionFolders(const WizardParts& parts) {
  if (PrepareVersionFolders(parts.context, parts.machine)) return true;
  ShowMessage(parts, StringId::kFoldersMissing);
  return false;
}

void ShowPages(const WizardParts& parts) {
  WizardState& state = parts.state;
  if (state.mode == MigrationMode::kReset) {
    state.pageIndex = std::clamp(state.pageIndex, kStartPlace, kResetFinishPlace);
  }
  parts.frame.ShowPage(PageAt(state.mode, state.pageIndex));
  parts.frame.ShowButtons(ButtonsAt(state.mode, state.pageIndex));
}

void ShowPagesAt(const WizardParts& parts, int place) {
  // When it cannot be made now, the step that needs it tells the user.
  if (place == kStartPlace) EnsureStagingFolder(parts);
  parts.state.pageIndex = place;
  ShowPages(parts);
}

// The page shows the version that was chosen on it, whatever has been worked on since.
void TakeVersionToExport(const WizardParts& parts) {
  const auto year = parts.frame.SelectedVersion(WizardPage::kVersion);
  if (year) SelectShownVersion(parts.context, *year);
}

void TakeVersionToImportInto(const WizardParts& parts) {
  const auto year = parts.frame.SelectedVersion(WizardPage::kPath);
  if (year) SelectTargetVersion(parts.state, parts.context, *year);
}

bool EnterExportCategories(const WizardParts& parts) {
  if (!HasVersionFolders(parts)) return false;
  BuildCategoryTree(
      parts.frame.Tree(WizardPage::kExportCategories),
      [&](const CategoryRecord& record) { return IsOfferedOnExport(record, parts.context); });
  return true;
}

bool Export(const WizardParts& parts) {
  if (!TellUnlessMade(parts, EnsureStagingFolder(parts))) return false;
  const ExportRun run{parts.context, parts.machine, parts.registryTool, parts.frame,
                      parts.frame.Tree(WizardPage::kExportCategories)};
  return RunExport(run).has_value();
}

void GoForwardInExport(const WizardParts& parts) {
  const int place = std::min(parts.state.pageIndex + 1, kBeyondFinishPlace);
  if (place == kVersionPlace) TakeVersionToExport(parts);
  if (place == kCategoriesPlace && !EnterExportCategories(parts)) return;
  if (place == kFinishPlace) {
    if (!Export(parts)) return;
    DeleteStagingFolder(parts.context, parts.machine);
  }
  ShowPagesAt(parts, place);
}

// False when the user stays on the path page or the program ends. What an earlier package left
// behind must not be imported along with this one.
bool EnterImportCategories(const WizardParts& parts) {
  if (!TellUnlessMade(parts, RenewStagingFolder(parts.context, parts.machine))) return false;
  const auto entry =
      parts.importSteps.EnterCategories(parts.frame.Tree(WizardPage::kImportCategories));
  if (entry == ImportSteps::Entry::kEnded) parts.frame.EndProgram();
  return entry == ImportSteps::Entry::kReady;
}

void ImportLegacyPackage(const WizardParts& parts) {
  parts.importSteps.ApplyLegacy();
  ShowPagesAt(parts, kBeyondFinishPlace);
}

void GoForwardInImport(const WizardParts& parts) {
  const int place = parts.state.pageIndex + 1;
  if (place > kBeyondFinishPlace) return;
  if (place == kPathPlace) {
    if (!TellUnlessMade(parts, EnsureStagingFolder(parts))) return;
    TakeVersionToImportInto(parts);
  }
  if (place == kCategoriesPlace) {
    if (parts.state.package.path.empty()) return ShowMessage(parts, StringId::kSelectFile);
    if (IsLegacyPackageName(parts.state.package.path)) return ImportLegacyPackage(parts);
    if (!EnterImportCategories(parts)) return;
  }
  if (place == kFinishPlace) {
    parts.importSteps.Apply(parts.frame.Tree(WizardPage::kImportCategories));
  }
  ShowPagesAt(parts, place);
}

bool EnterResetCategories(const WizardParts& parts) {
  if (!HasVersionFolders(parts)) return false;
  // The last steps of a reset are those of an import; they must find no package to apply.
  RenewStagingFolder(parts.context, parts.machine);
  BuildCategoryTree(
      parts.frame.Tree(WizardPage::kResetCategories),
      [&](const CategoryRecord& record) { return IsOfferedOnReset(record, parts.context); });
  return true;
}

bool ConfirmAndReset(const WizardParts& parts) {
  if (!parts.frame.AskYesNo(std::wstring(Text(StringId::kConfirmReset)))) return false;
  parts.resetSteps.Apply(parts.frame.Tree(WizardPage::kResetCategories));
  return true;
}

void GoForwardInReset(const WizardParts& parts) {
  int& shown = parts.state.pageIndex;
  if (shown == kStartPlace) SelectRunningVersion(parts.context);
  if (!PassesLiveKeyCheck(parts.frame, parts.machine.registry, parts.context)) return;
  if (shown == kStartPlace) {
    parts.frame.ShowApplicationMessage(std::wstring(Text(StringId::kResetWarning)));
  }
  const int place = std::min(shown + 1, kBeyondResetFinishPlace);
  if (place == kResetCategoriesPlace && !EnterResetCategories(parts)) return;
  // The answer No leaves the index ahead of the page, so that a further Next leads to the finish
  // page without a reset.
  shown = place;
  if (place == kResetFinishPlace && !ConfirmAndReset(parts)) return;
  ShowPages(parts);
}

void GoForwardIn(MigrationMode mode, const WizardParts& parts) {
  switch (mode) {
    case MigrationMode::kNone:
      return;
    case MigrationMode::kExport:
      return GoForwardInExport(parts);
    case MigrationMode::kImport:
      return GoForwardInImport(parts);
    case MigrationMode::kReset:
      return GoForwardInReset(parts);
  }
}

void GoForward(const WizardParts& parts) {
  const MigrationMode mode = parts.state.mode;
  if (mode == MigrationMode::kNone) return ShowMessage(parts, StringId::kPleaseSelect);
  GoForwardIn(mode, parts);
}

void GoBack(const WizardParts& parts) {
  const WizardState& state = parts.state;
  if (state.pageIndex == kStartPlace) return;
  const int place = state.pageIndex - 1;
  if (state.mode == MigrationMode::kImport && place == kPathPlace) {
    RenewStagingFolder(parts.context, parts.machine);
  }
  ShowPagesAt(parts, place);
}

// What an earlier run left on the finish page must not be taken for the next run's result.
void ReturnToStart(const WizardParts& parts) {
  parts.frame.SetFinishText(L"");
  ShowPagesAt(parts, kStartPlace);
}

void FinishOrReturn(const WizardParts& parts) {
  const MigrationMode mode = parts.context.mode;
  if (mode == MigrationMode::kNone) return;
  if (parts.state.pageIndex == LastPageIndex(mode)) return ReturnToStart(parts);
  GoForwardIn(mode, parts);
}

void BackUpEverything(const WizardParts& parts) {
  if (EnterExportCategories(parts)) Export(parts);
  RenewStagingFolder(parts.context, parts.machine);
}

}  // namespace

bool WizardFlow::Open() {
  ProductContext& context = parts_.context;
  SweepRunFolders(parts_.machine);
  // Without a folder the wizard opens all the same; the step that needs one tries again.
  RenewStagingFolder(context, parts_.machine);
  if (!LoadProductContext(context, parts_.machine, parts_.frame)) return false;
  EnumerateInstalledVersions(context, parts_.machine.registry);
  InitializePackageState(parts_.state.package, context, parts_.machine);
  return true;
}

void WizardFlow::Start() { ShowPagesAt(parts_, kStartPlace); }

void WizardFlow::Next() { RunAlone(GoForward); }
void WizardFlow::Back() { RunAlone(GoBack); }
void WizardFlow::Finish() { RunAlone(FinishOrReturn); }
void WizardFlow::OneClickBackup() { RunAlone(BackUpEverything); }

void WizardFlow::RunAlone(void (*step)(const WizardParts&)) {
  if (inStep_) return;
  const RaisedFlag raised(inStep_);
  step(parts_);
}

}  // namespace carrovan
