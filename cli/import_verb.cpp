#include "cli/category_choice.h"
#include "cli/progress.h"
#include "cli/run_output.h"
#include "cli/trust_refusal.h"
#include "cli/verbs.h"
#include "environment/installed_versions.h"
#include "environment/string_table.h"
#include "package/import_run.h"
#include "package/legacy_import.h"
#include "package/package_inspection.h"
#include "package/staging_folder.h"
#include "package/trusted_registry_tool.h"
#include "package/unpacking_room.h"

namespace carrovan {
namespace {

RunOutcome Refused(RunOutcome outcome, std::vector<std::wstring> refusals) {
  outcome.refusals = std::move(refusals);
  return outcome;
}

// One import on one machine.
class Import {
 public:
  Import(const ImportOptions& options, const PathRules& rules, const Machine& machine, LineLog& log)
      : options_(options),
        machine_(machine),
        paths_(rules, machine_),
        tool_(*machine.registryTool, *machine.clock, RegistryToolPace::kWaitForEnd),
        dom_(OpenXmlDom(*machine.files)),
        run_{outcome_.context, state_.package,  machine_, tool_, *dom_, log,
             observer_,        outcome_.report, &paths_} {}

  RunOutcome Run() {
    ProductContext& context = outcome_.context;
    if (!LoadProductContext(context, machine_)) return Refuse(RunRefusal::kUnknownProduct);
    EnumerateInstalledVersions(context, *machine_.registry);
    InitializePackageState(state_.package, context, machine_);
    if (!machine_.archives->Open(options_.package)) {
      return Refuse(DescribeNoPackage(*machine_.files, options_.package));
    }
    if (const auto lack = RoomThatLacksToUnpack(machine_, options_.package)) return Refuse(*lack);
    const StagingFolder staging(context, machine_);
    if (!staging.IsMade()) return Refuse(L"No staging folder can be made in the temporary path");
    return IsLegacyPackageName(options_.package) ? ImportDocument() : ImportCategories();
  }

 private:
  RunOutcome Refuse(const std::wstring& reason) const { return Refused(outcome_, {reason}); }
  RunOutcome Refuse(RunRefusal refusal) const { return Refuse(TextOf(refusal)); }

  RunOutcome ImportCategories() {
    if (const auto refusal = RefusalOfYear(outcome_.context, options_.year)) {
      return Refuse(*refusal);
    }
    state_.package.path = options_.package;
    SelectTargetVersion(state_, outcome_.context, options_.year);
    OpenPackage(run_);
    outcome_.packageVersion = state_.package.releaseVersion;
    if (const auto refusal = CheckTarget(run_)) return Refuse(*refusal);
    if (NeedsMending(run_)) {
      outcome_.notices.push_back(std::wstring(Text(StringId::kKeepPathFiles)));
    }
    const ImportPreparation preparation = RunImportPreparation(run_);
    if (preparation.refusal) return Refuse(*preparation.refusal);
    const ChosenCategories categories =
        ChooseCategories(options_.categories, preparation.offered, L"by this package");
    if (!categories.refusals.empty()) return Refused(outcome_, categories.refusals);
    outcome_.offered = preparation.offered;
    outcome_.chosen = categories.chosen;
    ApplyPackage(run_, outcome_.offered, outcome_.chosen);
    return Finished();
  }

  RunOutcome ImportDocument() {
    const LegacyOpening opening = OpenLegacyPackage(run_, options_.package);
    outcome_.report.unextracted = opening.unextracted;
    if (opening.refusal) return Refuse(*opening.refusal);
    // A text that is no year of a version here would lead to folders and keys of nobody.
    if (const auto refusal = RefusalOfYear(outcome_.context, opening.targetText)) {
      return Refuse(*refusal);
    }
    SelectTargetVersion(state_, outcome_.context, opening.targetText);
    const std::wstring& target = outcome_.context.selectedVersion;
    if (!options_.year.empty() && options_.year != target) {
      return Refuse(L"The package is for version " + target + L" and cannot be imported into " +
                    options_.year);
    }
    ImportLegacyCustomization(run_);
    return Finished();
  }

  RunOutcome Finished() {
    outcome_.finishText = ImportFinishText(outcome_.context);
    return outcome_;
  }

  const ImportOptions& options_;
  const Machine& machine_;
  PackagePaths paths_;
  PacedRegistryTool tool_;
  std::unique_ptr<XmlDom> dom_;
  RunObserver observer_;
  WizardState state_;
  RunOutcome outcome_;
  ImportRun run_;
};

RunOutcome ImportOn(const ImportOptions& options, const PathRules& rules, Machine machine,
                    LineLog& log) {
  PackageRegistryTool tool(machine, options.trust);
  machine.registryTool = &tool.Tool();
  RunOutcome outcome = Import(options, rules, machine, log).Run();
  tool.ReportUnforeseen(outcome.report);
  return outcome;
}

}  // namespace

ExitStatus RunImportVerb(const Session& session, const ImportOptions& options) {
  if (const auto refusal = RefusalOfLabels(options.categories)) return session.Misused(*refusal);
  if (options.year.empty() && !IsLegacyPackageName(options.package)) {
    return session.Misused(L"--to is needed: the release year of the version to import into");
  }
  if (IsLegacyPackageName(options.package) && !options.categories.all) {
    return session.Misused(L"--all is needed: a .ucx package holds one document, not categories");
  }
  const auto files = session.OpenFiles();
  if (!files) return ExitStatus::kFailed;
  PathRulesOrRefusal paths = RulesOf(options.paths, files->Files());
  if (paths.misuse) return session.Misused(*paths.misuse);
  if (paths.refusal) return session.Fail(*paths.refusal);
  paths.rules.listsPaths = options.run.dryRun || !paths.rules.map.IsEmpty();
  const auto owned = session.OpenMachine();
  if (!owned) return ExitStatus::kFailed;
  Machine machine = owned->Ports();
  machine.archives->UseThreads(options.threads);
  ProgressArchives archives(*machine.archives, session.console());
  machine.archives = &archives;
  if (IsProductRunning(*machine.processes)) {
    return RefuseRun(session, options.run, {L"import", options.year, options.package}, machine,
                     TextOf(RunRefusal::kProductRunning));
  }
  if (const auto refusal = RefusalOfPackage(*files, options.package, options.trust, machine)) {
    return RefuseRun(session, options.run, {L"import", options.year, options.package}, machine,
                     *refusal);
  }
  return RunAndPrint(session, options.run, {L"import", options.year, options.package},
                     {L"imported", L"left out"}, machine, [&](const Machine& ports, LineLog& log) {
                       return ImportOn(options, paths.rules, ports, log);
                     });
}

}  // namespace carrovan
