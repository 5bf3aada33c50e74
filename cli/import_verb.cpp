#include "cli/command_line_view.h"
#include "cli/console_log.h"
#include "cli/installed_years.h"
#include "cli/progress.h"
#include "cli/staging.h"
#include "cli/verbs.h"
#include "environment/installed_versions.h"
#include "package/import_steps.h"
#include "package/package_inspection.h"
#include "package/package_selection.h"

namespace carrovan {
namespace {

// The path page's questions, answered by the command line.
class CommandLinePathPage : public PathPageView {
 public:
  explicit CommandLinePathPage(const ImportOptions& options) : options_(options) {}

  std::optional<std::wstring> ChooseOpenFile(const OpenFileQuestion&) override {
    return options_.package;
  }
  void ShowPackagePath(const std::wstring&) override {}
  void ListVersions(const std::vector<std::wstring>& versions) override { listed_ = versions; }

  // A legacy package leaves no choice.
  std::optional<std::wstring> SelectedVersion() const override {
    return IsLegacyPackageName(options_.package) ? listed_.back() : options_.year;
  }

 private:
  const ImportOptions& options_;
  std::vector<std::wstring> listed_;
};

// One import from the command line.
class ImportVerb {
 public:
  ImportVerb(const Session& session, const ImportOptions& options, const Machine& machine)
      : session_(session),
        options_(options),
        machine_(machine),
        view_(session, L""),
        log_(session),
        tool_(machine.interpreter, machine.clock, RegistryToolPace::kWaitForEnd),
        dom_(OpenXmlDom(machine.files)),
        run_{context_, state_.package, machine_, tool_, *dom_, log_, view_, report_},
        steps_(run_) {}

  ExitStatus Run() {
    if (!LoadProductContext(context_, machine_, view_)) return ExitStatus::kFailed;
    EnumerateInstalledVersions(context_, machine_.registry);
    InitializePackageState(state_.package, context_, machine_);
    if (!IsPackageThere()) return ExitStatus::kFailed;
    const StagingFolder staging(context_, machine_);
    if (!staging.IsMade()) {
      return session_.Fail(L"No staging folder can be made in the temporary path");
    }
    return IsLegacyPackageName(options_.package) ? ImportLegacyPackage() : ImportPackage();
  }

 private:
  bool IsPackageThere() const {
    if (!machine_.files.Exists(options_.package)) {
      session_.Fail(options_.package + L" is missing");
      return false;
    }
    if (machine_.archives.Open(options_.package)) return true;
    session_.Fail(options_.package + L" is not a package");
    return false;
  }

  void Select() {
    CommandLinePathPage page(options_);
    SelectPackage({run_, state_, page});
  }

  ExitStatus ImportPackage() {
    if (!RequireInstalled(session_, context_, options_.year)) return ExitStatus::kFailed;
    Select();
    CategoryChecklist checklist;
    if (steps_.EnterCategories(checklist) != ImportSteps::Entry::kReady) {
      return ExitStatus::kFailed;
    }
    if (!CheckChosen(session_, options_.categories, L"by this package", checklist)) {
      return ExitStatus::kFailed;
    }
    steps_.Apply(checklist);
    PrintOutcomes(session_, checklist, L"imported", L"left out");
    return session_.Conclude(report_, view_.FinishText());
  }

  ExitStatus ImportLegacyPackage() {
    Select();
    if (state_.package.path.empty()) return ExitStatus::kFailed;
    if (!options_.year.empty() && options_.year != context_.selectedVersion) {
      return session_.Fail(L"The package is for version " + context_.selectedVersion +
                           L" and cannot be imported into " + options_.year);
    }
    steps_.ApplyLegacy();
    return session_.Conclude(report_, view_.FinishText());
  }

  const Session& session_;
  const ImportOptions& options_;
  const Machine& machine_;
  CommandLineView view_;
  ConsoleLog log_;
  RegistryTool tool_;
  std::unique_ptr<XmlDom> dom_;
  ProductContext context_;
  WizardState state_;
  ImportReport report_;
  ImportRun run_;
  PackageImport steps_;
};

}  // namespace

ExitStatus RunImportVerb(const Session& session, const ImportOptions& options) {
  if (const auto refused = RefuseUnknownLabels(session, options.categories)) return *refused;
  if (options.year.empty() && !IsLegacyPackageName(options.package)) {
    return session.Misused(L"--to is needed: the release year of the version to import into");
  }
  if (IsLegacyPackageName(options.package) && !options.categories.all) {
    return session.Misused(L"--all is needed: a .ucx package holds one document, not categories");
  }
  const auto owned = session.OpenMachine();
  if (!owned) return ExitStatus::kFailed;
  ProgressArchives archives(owned->Ports().archives, session.console());
  const Machine machine = WithArchives(owned->Ports(), archives);
  if (session.RefuseBesideProduct(machine.processes)) return ExitStatus::kFailed;
  return ImportVerb(session, options, machine).Run();
}

}  // namespace carrovan
