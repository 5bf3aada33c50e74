#include "wizard/wizard_flow.h"

#include <algorithm>

#include "environment/installed_versions.h"
#include "package/package_inspection.h"
#include "package/staging_folder.h"
#include "text/text.h"
#include "wizard/wizard_export.h"
#include "wizard/wizard_reset.h"
#include "wizard/wizard_undo.h"

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

void ShowPages(const WizardParts& parts) {
  WizardState& state = parts.state;
  if (state.mode == MigrationMode::kReset) {
    state.pageIndex = std::clamp(state.pageIndex, kStartPlace, kResetFinishPlace);
  }
  parts.frame.ShowPage(PageAt(state.mode, state.pageIndex));
  parts.frame.ShowButtons(ButtonsAt(state.mode, state.pageIndex));
}

void ShowPagesAt(const WizardParts& parts, int place) {
  // When it cannot be made now, the step that needs it reports that.
  if (place == kStartPlace) static_cast<void>(HasStagingFolder(parts));
  parts.state.pageIndex = place;
  ShowPages(parts);
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

void GoForwardInImport(const WizardParts& parts, WizardImport& import) {
  const int place = parts.state.pageIndex + 1;
  if (place > kBeyondFinishPlace) return;
  if (place == kPathPlace) {
    if (!EnsureStagingFolder(parts)) return;
    TakeVersionToImportInto(parts);
  }
  if (place == kCategoriesPlace) {
    if (parts.state.package.path.empty()) return ShowMessage(parts, StringId::kSelectFile);
    if (IsLegacyPackageName(parts.state.package.path)) {
      if (ImportLegacyPackage(parts, import)) ShowPagesAt(parts, kBeyondFinishPlace);
      return;
    }
    if (!EnterImportCategories(parts, import)) return;
  }
  if (place == kFinishPlace && !Import(parts, import)) return;
  ShowPagesAt(parts, place);
}

void GoForwardInReset(const WizardParts& parts) {
  int& shown = parts.state.pageIndex;
  if (shown == kStartPlace) SelectRunningVersion(parts.context);
  if (!HasBeenRun(parts.context, *parts.machine.registry)) {
    return ShowRefusal(parts, RunRefusal::kNeverStarted);
  }
  if (shown == kStartPlace) {
    parts.frame.ShowApplicationMessage(parts.texts.Text(StringId::kResetWarning));
  }
  const int place = std::min(shown + 1, kBeyondResetFinishPlace);
  if (place == kResetCategoriesPlace && !EnterResetCategories(parts)) return;
  const ResetAnswer answer =
      place == kResetFinishPlace ? ConfirmAndReset(parts) : ResetAnswer::kDone;
  if (answer == ResetAnswer::kRefused) return;
  // The answer No leaves the index ahead of the page, so that a further Next leads to the finish
  // page without a reset.
  shown = place;
  if (answer == ResetAnswer::kDone) ShowPages(parts);
}

void GoForwardIn(MigrationMode mode, const WizardParts& parts, WizardImport& import) {
  switch (mode) {
    case MigrationMode::kNone:
      return;
    case MigrationMode::kExport:
      return GoForwardInExport(parts);
    case MigrationMode::kImport:
      return GoForwardInImport(parts, import);
    case MigrationMode::kReset:
      return GoForwardInReset(parts);
  }
}

void GoForward(const WizardParts& parts, WizardImport& import) {
  const MigrationMode mode = parts.state.mode;
  if (mode == MigrationMode::kNone) return ShowMessage(parts, StringId::kPleaseSelect);
  GoForwardIn(mode, parts, import);
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
  parts.frame.SetFinishDetails({});
  ShowPagesAt(parts, kStartPlace);
}

void FinishOrReturn(const WizardParts& parts, WizardImport& import) {
  const MigrationMode mode = parts.context.mode;
  if (mode == MigrationMode::kNone) return;
  if (parts.state.pageIndex == LastPageIndex(mode)) return ReturnToStart(parts);
  GoForwardIn(mode, parts, import);
}

bool IsPackageName(const std::wstring& path) {
  return EndsWithIgnoringAsciiCase(path, L".ucex") || IsLegacyPackageName(path);
}

void OpenPackageOnPathPage(const WizardParts& parts, WizardImport& import,
                           const std::wstring& path) {
  if (!IsPackageName(path)) return ShowMessage(parts, StringId::kSelectFile);
  ChooseMode(parts.state, parts.context, MigrationMode::kImport);
  parts.frame.ShowMode(MigrationMode::kImport);
  parts.frame.SetFinishDetails({});
  // What another run or another package has left there must not be imported.
  RenewStagingFolder(parts.context, parts.machine);
  ShowPagesAt(parts, kPathPlace);
  TakePackage(parts, import, parts.frame.PathPage(), path);
}

void ShowChangesOfShownPage(const WizardParts& parts, const WizardImport& import) {
  switch (PageAt(parts.state.mode, parts.state.pageIndex)) {
    case WizardPage::kImportCategories:
      return ShowChangesOfImport(parts, import);
    case WizardPage::kResetCategories:
      return ShowChangesOfReset(parts);
    default:
      // Behind the answer No to a reset the index is ahead of the page that is shown.
      if (parts.state.mode == MigrationMode::kReset) ShowChangesOfReset(parts);
  }
}

void UndoAndSaySo(const WizardParts& parts) {
  if (!UndoLastRun(parts) || parts.state.mode == MigrationMode::kExport) return;
  if (PageAt(parts.state.mode, parts.state.pageIndex) != WizardPage::kFinish) return;
  FinishDetails details;
  details.lines = {parts.texts.Text(StringId::kWasUndone)};
  parts.frame.SetFinishDetails(details);
}

}  // namespace

bool WizardFlow::Open() {
  ProductContext& context = parts_.context;
  SweepRunFolders(parts_.machine);
  // Without a folder the wizard opens all the same; the step that needs one tries again.
  RenewStagingFolder(context, parts_.machine);
  if (!LoadProductContext(context, parts_.machine)) {
    ShowRefusal(parts_, RunRefusal::kUnknownProduct);
    parts_.frame.CloseWizard();
    return false;
  }
  EnumerateInstalledVersions(context, *parts_.machine.registry);
  InitializePackageState(parts_.state.package, context, parts_.machine);
  return true;
}

void WizardFlow::Start() { ShowPagesAt(parts_, kStartPlace); }

void WizardFlow::Next() {
  RunAlone([this] { GoForward(parts_, import_); });
}

void WizardFlow::Back() {
  RunAlone([this] { GoBack(parts_); });
}

void WizardFlow::Finish() {
  RunAlone([this] { FinishOrReturn(parts_, import_); });
}

void WizardFlow::OneClickBackup() {
  RunAlone([this] { BackUpEverything(parts_); });
}

void WizardFlow::SelectFile(PathPageView& page) {
  RunAlone([&] { ChoosePackage(parts_, import_, page); });
}

void WizardFlow::OpenPackageFile(const std::wstring& path) {
  RunAlone([&] { OpenPackageOnPathPage(parts_, import_, path); });
}

void WizardFlow::ShowChanges() {
  RunAlone([this] { ShowChangesOfShownPage(parts_, import_); });
}

void WizardFlow::UndoLast() {
  RunAlone([this] { UndoAndSaySo(parts_); });
}

void WizardFlow::RunAlone(const std::function<void()>& step) {
  if (inStep_) return;
  const RaisedFlag raised(inStep_);
  step();
}

}  // namespace carrovan
