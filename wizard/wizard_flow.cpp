#include "wizard/wizard_flow.h"

#include <algorithm>

#include "environment/installed_versions.h"
#include "environment/version_folders.h"
#include "package/export_run.h"
#include "package/import_run.h"
#include "package/legacy_import.h"
#include "package/package_inspection.h"
#include "package/staging_folder.h"
#include "reset/reset_run.h"
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
  if (!folder.empty() && parts.machine.files->IsFolder(RemoveFileSpec(folder))) return true;
  return RenewStagingFolder(parts.context, parts.machine);
}

void ShowRefusal(const WizardParts& parts, RunRefusal refusal) {
  const bool inOwnStyle =
      refusal == RunRefusal::kNewerPackage || refusal == RunRefusal::kNeverStarted;
  if (inOwnStyle) return parts.frame.ShowApplicationMessage(TextOf(refusal));
  parts.frame.ShowMessage(TextOf(refusal));
}

void ShowUnextracted(const WizardParts& parts, const std::vector<std::wstring>& paths) {
  for (const std::wstring& path : paths) parts.frame.ShowMessage(TextOfUnextracted(path));
}

bool ReportUnlessMade(const WizardParts& parts, bool hasStagingFolder) {
  if (!hasStagingFolder) ShowRefusal(parts, RunRefusal::kNoStagingFolder);
  return hasStagingFolder;
}

// Without its folders known, a run would look for them at the root of a drive.
bool HasVersionFolders(const WizardParts& parts) {
  if (PrepareVersionFolders(parts.context, parts.machine)) return true;
  ShowRefusal(parts, RunRefusal::kFoldersMissing);
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
  // When it cannot be made now, the step that needs it reports that.
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

// Lets the user follow a run in the tree of its page.
class TreeObserver : public RunObserver {
 public:
  explicit TreeObserver(CategoryTree& tree) : tree_(tree) {}
  void OnCategory(SettingCategory category) override { ShowCategory(tree_, category); }

 private:
  CategoryTree& tree_;
};

bool EnterExportCategories(const WizardParts& parts) {
  if (!HasVersionFolders(parts)) return false;
  BuildCategoryTree(parts.frame.Tree(WizardPage::kExportCategories),
                    OfferedOnExport(parts.context));
  return true;
}

SaveFileQuestion PackageFileQuestion() {
  return {.defaultExtension = L".ucex",
          .filter = L"User Configuration Files (*.ucex)|*.ucex|",
          .hideReadOnlyBox = true,
          .askBeforeOverwriting = true};
}

// False when the user stays on the categories: none is checked or no file was chosen.
bool Export(const WizardParts& parts) {
  if (!ReportUnlessMade(parts, EnsureStagingFolder(parts))) return false;
  const auto chosen = CheckedCategories(parts.frame.Tree(WizardPage::kExportCategories));
  if (chosen.empty()) {
    ShowMessage(parts, StringId::kSelectExportedSettings);
    return false;
  }
  const auto archivePath = parts.frame.ChooseSaveFile(PackageFileQuestion());
  if (!archivePath || archivePath->empty()) return false;
  RunObserver observer;
  RunExport({parts.context, parts.machine, parts.registryTool, observer}, chosen, *archivePath);
  parts.frame.SetFinishText(ExportFinishText(*archivePath));
  return true;
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

ImportRun ImportOf(const WizardParts& parts, WizardImport& import, RunObserver& observer) {
  return {parts.context, parts.state.package, parts.machine, parts.registryTool,
          parts.dom,     parts.log,           observer,      import.report};
}

// False when the user stays on the path page or the program ends. What an earlier package left
// behind must not be imported along with this one.
bool EnterImportCategories(const WizardParts& parts, WizardImport& import) {
  if (!ReportUnlessMade(parts, RenewStagingFolder(parts.context, parts.machine))) return false;
  RunObserver observer;
  const ImportRun run = ImportOf(parts, import, observer);
  OpenPackage(run);
  ShowUnextracted(parts, import.report.unextracted);
  if (const auto refusal = CheckTarget(run)) {
    ShowRefusal(parts, *refusal);
    return false;
  }
  if (NeedsMending(run)) ShowMessage(parts, StringId::kKeepPathFiles);
  const ImportPreparation preparation = RunImportPreparation(run);
  import.offered = preparation.offered;
  BuildCategoryTree(parts.frame.Tree(WizardPage::kImportCategories), preparation.offered);
  if (!preparation.refusal) return true;
  ShowRefusal(parts, *preparation.refusal);
  parts.frame.EndProgram();
  return false;
}

void Import(const WizardParts& parts, WizardImport& import) {
  CategoryTree& tree = parts.frame.Tree(WizardPage::kImportCategories);
  TreeObserver observer(tree);
  const std::size_t shown = import.report.unextracted.size();
  ApplyPackage(ImportOf(parts, import, observer), import.offered, CheckedCategories(tree));
  const auto& unextracted = import.report.unextracted;
  ShowUnextracted(parts,
                  {unextracted.begin() + static_cast<std::ptrdiff_t>(shown), unextracted.end()});
  parts.frame.SetFinishText(ImportFinishText(parts.context));
}

// The year of the version that a legacy package is for; nothing, after the user was shown why, for
// one that is refused.
std::optional<std::wstring> TakeLegacyPackage(const WizardParts& parts, WizardImport& import,
                                              const std::wstring& path) {
  RunObserver observer;
  const LegacyOpening opening = OpenLegacyPackage(ImportOf(parts, import, observer), path);
  ShowUnextracted(parts, opening.unextracted);
  if (!opening.refusal) return opening.targetText;
  ShowRefusal(parts, *opening.refusal);
  return std::nullopt;
}

void ImportLegacyPackage(const WizardParts& parts, WizardImport& import) {
  const PackageState& package = parts.state.package;
  // Another run may have emptied the staging folder since the package was chosen.
  const bool isUnpacked = parts.machine.files->Exists(package.legacyXmlPath) ||
                          TakeLegacyPackage(parts, import, std::wstring(package.path));
  if (isUnpacked) {
    RunObserver observer;
    ImportLegacyCustomization(ImportOf(parts, import, observer));
    parts.frame.SetFinishText(ImportFinishText(parts.context));
  }
  ShowPagesAt(parts, kBeyondFinishPlace);
}

OpenFileQuestion PackageQuestion() {
  return {.defaultExtension = L".ucex",
          .filter = L"User Configuration Files (*.ucx; *.ucex)|*.ucx;*.ucex||"};
}

void TakeShownVersion(const WizardParts& parts, const PathPageView& page) {
  if (const auto year = page.SelectedVersion()) {
    SelectTargetVersion(parts.state, parts.context, *year);
  }
}

// Nothing for a package that is refused.
std::optional<std::vector<std::wstring>> VersionsFor(const WizardParts& parts, WizardImport& import,
                                                     const std::wstring& path) {
  if (!IsLegacyPackageName(path)) return ListInstalledYears(parts.context);
  const auto year = TakeLegacyPackage(parts, import, path);
  return year ? std::optional(std::vector{*year}) : std::nullopt;
}

void ChoosePackage(const WizardParts& parts, WizardImport& import, PathPageView& page) {
  const auto path = page.ChooseOpenFile(PackageQuestion());
  if (!path) return TakeShownVersion(parts, page);
  if (path->empty()) return;
  const auto versions = VersionsFor(parts, import, *path);
  if (!versions) return;
  parts.state.package.path = *path;
  page.ShowPackagePath(*path);
  page.ListVersions(*versions);
  TakeShownVersion(parts, page);
}

void GoForwardInImport(const WizardParts& parts, WizardImport& import) {
  const int place = parts.state.pageIndex + 1;
  if (place > kBeyondFinishPlace) return;
  if (place == kPathPlace) {
    if (!ReportUnlessMade(parts, EnsureStagingFolder(parts))) return;
    TakeVersionToImportInto(parts);
  }
  if (place == kCategoriesPlace) {
    if (parts.state.package.path.empty()) return ShowMessage(parts, StringId::kSelectFile);
    if (IsLegacyPackageName(parts.state.package.path)) {
      return ImportLegacyPackage(parts, import);
    }
    if (!EnterImportCategories(parts, import)) return;
  }
  if (place == kFinishPlace) Import(parts, import);
  ShowPagesAt(parts, place);
}

bool EnterResetCategories(const WizardParts& parts) {
  if (!HasVersionFolders(parts)) return false;
  // The last steps of a reset are those of an import; they must find no package to apply.
  RenewStagingFolder(parts.context, parts.machine);
  BuildCategoryTree(parts.frame.Tree(WizardPage::kResetCategories), OfferedOnReset(parts.context));
  return true;
}

void Reset(const WizardParts& parts) {
  CategoryTree& tree = parts.frame.Tree(WizardPage::kResetCategories);
  TreeObserver observer(tree);
  const RunReport report =
      RunReset({parts.context, parts.state.package, parts.machine, parts.registryTool, observer},
               CheckedCategories(tree));
  ShowUnextracted(parts, report.unextracted);
  parts.frame.SetFinishText(ResetFinishText(parts.context));
}

bool ConfirmAndReset(const WizardParts& parts) {
  if (!parts.frame.AskYesNo(std::wstring(Text(StringId::kConfirmReset)))) return false;
  Reset(parts);
  return true;
}

void GoForwardInReset(const WizardParts& parts) {
  int& shown = parts.state.pageIndex;
  if (shown == kStartPlace) SelectRunningVersion(parts.context);
  if (!HasBeenRun(parts.context, *parts.machine.registry)) {
    return ShowRefusal(parts, RunRefusal::kNeverStarted);
  }
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
  ShowPagesAt(parts, kStartPlace);
}

void FinishOrReturn(const WizardParts& parts, WizardImport& import) {
  const MigrationMode mode = parts.context.mode;
  if (mode == MigrationMode::kNone) return;
  if (parts.state.pageIndex == LastPageIndex(mode)) return ReturnToStart(parts);
  GoForwardIn(mode, parts, import);
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

void WizardFlow::RunAlone(const std::function<void()>& step) {
  if (inStep_) return;
  const RaisedFlag raised(inStep_);
  step();
}

}  // namespace carrovan
