#include "wizard/wizard_import.h"

#include "package/import_run.h"
#include "package/legacy_import.h"
#include "package/package_judgement.h"
#include "package/staging_folder.h"
#include "package/trusted_registry_tool.h"
#include "wizard/run_progress.h"
#include "wizard/wizard_guard.h"

namespace carrovan {
namespace {

// Most packages hold less.
constexpr std::size_t kExpectedItems = 400;

// An import on one machine, which may stand in front of the real one.
class ImportStep {
 public:
  ImportStep(const WizardParts& parts, const Machine& machine, RegistryToolPace pace,
             RunObserver& observer, ProductContext& context, PackageState& package,
             RunReport& report)
      : machine_(machine),
        tool_(*machine.registryTool, *machine.clock, pace),
        dom_(OpenXmlDom(*machine.files)),
        run_{context, package, machine_, tool_, *dom_, parts.log, observer, report} {}
  ImportStep(const ImportStep&) = delete;
  ImportStep& operator=(const ImportStep&) = delete;

  const ImportRun& Run() const { return run_; }

 private:
  const Machine machine_;
  PacedRegistryTool tool_;
  std::unique_ptr<XmlDom> dom_;
  ImportRun run_;
};

// What is done before anything of the user's is changed.
ImportStep StepOn(const WizardParts& parts, WizardImport& import, RunObserver& observer) {
  return ImportStep(parts, parts.machine, RegistryToolPace::kFixedPause, observer, parts.context,
                    parts.state.package, import.report);
}

using Apply = std::function<void(const ImportRun& run)>;

// Applies with the registry tool that the user's trust in the package calls for.
void ApplyTrusted(const WizardParts& parts, bool isTrusted, Machine machine, RegistryToolPace pace,
                  RunObserver& observer, ProductContext& context, PackageState& package,
                  RunReport& report, const Apply& apply) {
  PackageRegistryTool tool(machine, isTrusted);
  machine.registryTool = &tool.Tool();
  apply(ImportStep(parts, machine, pace, observer, context, package, report).Run());
  tool.ReportUnforeseen(report);
}

PointBegun PointOf(const WizardParts& parts) {
  return {L"import", parts.context.selectedVersion, parts.state.package.path};
}

// The run that is guarded. It works on the wizard's own context and on the package as it lies in
// the staging folder.
Run RunOf(const WizardParts& parts, WizardImport& import, const CategorySet& chosen,
          RunObserver& observer, const Apply& apply) {
  return [&, chosen, apply](const Machine& machine, LineLog&) {
    ApplyTrusted(parts, import.isTrusted, machine, RegistryToolPace::kFixedPause, observer,
                 parts.context, parts.state.package, import.report, apply);
    RunOutcome outcome;
    outcome.report = import.report;
    outcome.finishText = ImportFinishText(parts.context, parts.texts);
    outcome.offered = import.offered;
    outcome.chosen = chosen;
    outcome.context = parts.context;
    return outcome;
  };
}

std::vector<ListedLine> LinesOf(const PackageJudgement& judgement, const std::wstring& package,
                                const TextSource& texts) {
  std::vector<ListedLine> lines;
  if (judgement.isUnreadable) {
    lines.push_back({0, package + L": " + texts.Text(StringId::kCannotBeLookedInto)});
  }
  for (const auto* reasons : {&judgement.unfit, &judgement.reasonsForDistrust}) {
    for (const RefusedItem& reason : *reasons) {
      lines.push_back({0, reason.name + L": " + reason.reason});
    }
  }
  return lines;
}

// True for a package that has nothing against it or that the user takes all the same.
bool IsWanted(const WizardParts& parts, WizardImport& import, const std::wstring& package) {
  const auto lines =
      LinesOf(JudgePackage(parts.packages, package, parts.machine), package, parts.texts);
  import.isTrusted = !lines.empty();
  if (lines.empty()) return true;
  ListQuestion question;
  question.text = parts.texts.Text(StringId::kDistrust);
  question.lines = lines;
  question.yes = StringId::kYes;
  question.no = StringId::kNo;
  return parts.frame.AskWithList(question);
}

// The year of the version that a legacy package is for; nothing, after the user was shown why, for
// one that is refused.
std::optional<std::wstring> TakeLegacyPackage(const WizardParts& parts, WizardImport& import,
                                              const std::wstring& path) {
  const bool wasTrusted = import.isTrusted;
  if (!IsWanted(parts, import, path)) {
    import.isTrusted = wasTrusted;
    return std::nullopt;
  }
  RunProgress progress(parts.frame, 1);
  const LegacyOpening opening = OpenLegacyPackage(StepOn(parts, import, progress).Run(), path);
  ShowUnextracted(parts, opening.unextracted);
  if (!opening.refusal) return opening.targetText;
  ShowRefusal(parts, *opening.refusal);
  return std::nullopt;
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

}  // namespace

void TakeVersionToImportInto(const WizardParts& parts) {
  const auto year = parts.frame.SelectedVersion(WizardPage::kPath);
  if (year) SelectTargetVersion(parts.state, parts.context, *year);
}

void TakePackage(const WizardParts& parts, WizardImport& import, PathPageView& page,
                 const std::wstring& path) {
  const auto versions = VersionsFor(parts, import, path);
  if (!versions) return;
  parts.state.package.path = path;
  page.ShowPackagePath(path);
  page.ListVersions(*versions);
  TakeShownVersion(parts, page);
}

void ChoosePackage(const WizardParts& parts, WizardImport& import, PathPageView& page) {
  const auto path = page.ChooseOpenFile(PackageQuestion());
  if (!path) return TakeShownVersion(parts, page);
  if (!path->empty()) TakePackage(parts, import, page, *path);
}

// What an earlier package left behind must not be imported along with this one.
bool EnterImportCategories(const WizardParts& parts, WizardImport& import) {
  if (!IsWanted(parts, import, parts.state.package.path)) return false;
  if (!RenewStagingFolder(parts.context, parts.machine)) {
    ShowRefusal(parts, RunRefusal::kNoStagingFolder);
    return false;
  }
  RunProgress progress(parts.frame, kExpectedItems);
  const ImportStep step = StepOn(parts, import, progress);
  OpenPackage(step.Run());
  ShowUnextracted(parts, import.report.unextracted);
  if (const auto refusal = CheckTarget(step.Run())) {
    ShowRefusal(parts, *refusal);
    return false;
  }
  if (NeedsMending(step.Run())) ShowMessage(parts, StringId::kKeepPathFiles);
  const ImportPreparation preparation = RunImportPreparation(step.Run());
  import.offered = preparation.offered;
  BuildCategoryTree(parts.frame.Tree(WizardPage::kImportCategories), preparation.offered,
                    parts.texts);
  if (!preparation.refusal) return true;
  ShowRefusal(parts, *preparation.refusal);
  parts.frame.EndProgram();
  return false;
}

void ShowChangesOfImport(const WizardParts& parts, const WizardImport& import) {
  ProductContext context = parts.context;
  PackageState package = parts.state.package;
  RunReport report = import.report;
  const CategorySet chosen = CheckedCategories(parts.frame.Tree(WizardPage::kImportCategories));
  RunObserver observer;
  ShowChangesOf(
      parts, PointOf(parts), StringId::kChangesOfImport, [&](const Machine& machine, LineLog&) {
        ApplyTrusted(parts, import.isTrusted, machine, RegistryToolPace::kWaitForEnd, observer,
                     context, package, report,
                     [&](const ImportRun& run) { ApplyPackage(run, import.offered, chosen); });
        RunOutcome outcome;
        outcome.report = report;
        outcome.context = context;
        return outcome;
      });
}

bool Import(const WizardParts& parts, WizardImport& import) {
  if (!EnsureProductEnded(parts)) return false;
  CategoryTree& tree = parts.frame.Tree(WizardPage::kImportCategories);
  const CategorySet chosen = CheckedCategories(tree);
  const std::size_t shown = import.report.unextracted.size();
  RunProgress progress(parts.frame, kExpectedItems, &tree);
  const auto report = RunWithRestorePoint(
      parts, PointOf(parts), RunOf(parts, import, chosen, progress, [&](const ImportRun& run) {
        ApplyPackage(run, import.offered, chosen);
      }));
  if (!report) return false;
  const auto& unextracted = import.report.unextracted;
  ShowUnextracted(parts,
                  {unextracted.begin() + static_cast<std::ptrdiff_t>(shown), unextracted.end()});
  ShowFinish(parts, *report, StringId::kCategoryImported);
  return true;
}

bool ImportLegacyPackage(const WizardParts& parts, WizardImport& import) {
  PackageState& package = parts.state.package;
  if (!EnsureProductEnded(parts)) return false;
  // Another run may have emptied the staging folder since the package was chosen.
  const bool isUnpacked = parts.machine.files->Exists(package.legacyXmlPath) ||
                          TakeLegacyPackage(parts, import, std::wstring(package.path));
  if (!isUnpacked) return true;
  import.report = {};
  import.offered.clear();
  RunProgress progress(parts.frame, 1);
  const auto report = RunWithRestorePoint(
      parts, PointOf(parts), RunOf(parts, import, {}, progress, ImportLegacyCustomization));
  if (!report) return false;
  ShowFinish(parts, *report, StringId::kCategoryImported);
  return true;
}

}  // namespace carrovan
