#include "cli/applied_run.h"
#include "cli/category_choice.h"
#include "cli/command_line_view.h"
#include "cli/progress.h"
#include "cli/trust_refusal.h"
#include "cli/verbs.h"
#include "environment/installed_versions.h"
#include "package/import_steps.h"
#include "package/package_inspection.h"
#include "package/package_selection.h"
#include "package/staging_folder.h"
#include "package/trusted_interpreter.h"

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
  ImportVerb(const Session& session, const ImportOptions& options, const Machine& machine,
             LineLog& log)
      : session_(session),
        options_(options),
        machine_(machine),
        view_(session, L""),
        tool_(machine.interpreter, machine.clock, RegistryToolPace::kWaitForEnd),
        dom_(OpenXmlDom(machine.files)),
        run_{context_, state_.package, machine_, tool_, *dom_, log, view_, report_},
        steps_(run_) {}

  // Nothing after saying why.
  std::optional<AppliedRun> Run() {
    if (!LoadProductContext(context_, machine_, view_)) return std::nullopt;
    EnumerateInstalledVersions(context_, machine_.registry);
    InitializePackageState(state_.package, context_, machine_);
    if (!IsPackageThere()) return std::nullopt;
    const StagingFolder staging(context_, machine_);
    if (!staging.IsMade()) return Refuse(L"No staging folder can be made in the temporary path");
    return IsLegacyPackageName(options_.package) ? ImportLegacyPackage() : ImportPackage();
  }

 private:
  bool IsPackageThere() const {
    if (machine_.archives.Open(options_.package)) return true;
    session_.Fail(DescribeNoPackage(machine_.files, options_.package));
    return false;
  }

  void Select() {
    CommandLinePathPage page(options_);
    SelectPackage({run_, state_, page});
  }

  std::optional<AppliedRun> Refuse(const std::wstring& reason) const {
    session_.Complain(reason);
    return std::nullopt;
  }

  std::optional<AppliedRun> ImportPackage() {
    if (!RequireInstalled(session_, context_, options_.year)) return std::nullopt;
    Select();
    CategoryChecklist checklist;
    if (steps_.EnterCategories(checklist) != ImportSteps::Entry::kReady) return std::nullopt;
    if (!CheckChosen(session_, options_.categories, L"by this package", checklist)) {
      return std::nullopt;
    }
    steps_.Apply(checklist);
    return AppliedRun{report_, view_.FinishText(), OutcomesOf(checklist, L"imported", L"left out"),
                      context_};
  }

  std::optional<AppliedRun> ImportLegacyPackage() {
    Select();
    if (state_.package.path.empty()) return std::nullopt;
    if (!options_.year.empty() && options_.year != context_.selectedVersion) {
      return Refuse(L"The package is for version " + context_.selectedVersion +
                    L" and cannot be imported into " + options_.year);
    }
    steps_.ApplyLegacy();
    return AppliedRun{report_, view_.FinishText(), {}, context_};
  }

  const Session& session_;
  const ImportOptions& options_;
  const Machine& machine_;
  CommandLineView view_;
  RegistryTool tool_;
  std::unique_ptr<XmlDom> dom_;
  ProductContext context_;
  WizardState state_;
  ImportReport report_;
  ImportRun run_;
  PackageImport steps_;
};

std::optional<AppliedRun> RunOnce(const Session& session, const ImportOptions& options,
                                  const Machine& machine, LineLog& log) {
  if (options.trust) {
    NotingInterpreter interpreter(machine.interpreter, machine.files);
    auto applied = ImportVerb(session, options, WithInterpreter(machine, interpreter), log).Run();
    if (!applied) return applied;
    for (const std::wstring& line : interpreter.NotUnderstood()) {
      applied->report.problems.push_back(L"Neither foreseen nor undone is what " + line);
    }
    return applied;
  }
  TrustedInterpreter interpreter(machine.interpreter, machine.files,
                                 machine.product.CompanyShortName());
  return ImportVerb(session, options, WithInterpreter(machine, interpreter), log).Run();
}

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
  if (RefusePackage(session, options.package, options.trust, machine)) return ExitStatus::kFailed;
  if (!options.run.dryRun) SweepRunFolders(machine);
  return RunAsChosen(session, options.run, {L"import", options.year, options.package}, machine,
                     [&options](const Session& on, const Machine& ports, LineLog& log) {
                       return RunOnce(on, options, ports, log);
                     });
}

}  // namespace carrovan
