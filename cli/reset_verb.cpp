#include "cli/category_choice.h"
#include "cli/run_output.h"
#include "cli/verbs.h"
#include "environment/installed_versions.h"
#include "environment/version_folders.h"
#include "environment/wizard_state.h"
#include "package/staging_folder.h"
#include "reset/reset_run.h"

namespace carrovan {
namespace {

RunOutcome Refused(std::vector<std::wstring> refusals) {
  RunOutcome outcome;
  outcome.refusals = std::move(refusals);
  return outcome;
}

RunOutcome ResetVersion(const ResetOptions& options, const Machine& machine) {
  RunOutcome outcome;
  ProductContext& context = outcome.context;
  if (!LoadProductContext(context, machine)) return Refused({TextOf(RunRefusal::kUnknownProduct)});
  if (!HasBeenRun(context, *machine.registry)) return Refused({TextOf(RunRefusal::kNeverStarted)});
  if (!PrepareVersionFolders(context, machine)) {
    return Refused(
        {L"The folders of version " + context.humanReadableVersion + L" cannot be told"});
  }
  outcome.offered = OfferedOnReset(context);
  const ChosenCategories categories =
      ChooseCategories(options.categories, outcome.offered, L"for this product");
  if (!categories.refusals.empty()) return Refused(categories.refusals);
  outcome.chosen = categories.chosen;
  PackageState package;
  InitializePackageState(package, context, machine);
  const StagingFolder staging(context, machine);
  if (!staging.IsMade()) return Refused({L"No staging folder can be made in the temporary path"});
  PacedRegistryTool tool(*machine.registryTool, *machine.clock, RegistryToolPace::kWaitForEnd);
  RunObserver observer;
  outcome.report = RunReset({context, package, machine, tool, observer}, outcome.chosen);
  outcome.finishText = ResetFinishText(context);
  return outcome;
}

}  // namespace

ExitStatus RunResetVerb(const Session& session, const ResetOptions& options) {
  if (const auto refusal = RefusalOfLabels(options.categories)) return session.Misused(*refusal);
  if (!options.yes && !options.run.dryRun) {
    return session.Misused(L"--yes is needed: the reset removes settings");
  }
  const auto owned = session.OpenMachine();
  if (!owned) return ExitStatus::kFailed;
  const Machine machine = owned->Ports();
  const PointBegun about{L"reset", machine.product->HumanReadableVersion(), {}};
  if (IsProductRunning(*machine.processes)) {
    return RefuseRun(session, options.run, about, machine, TextOf(RunRefusal::kProductRunning));
  }
  return RunAndPrint(
      session, options.run, about, {L"reset", L"kept"}, machine,
      [&options](const Machine& ports, LineLog&) { return ResetVersion(options, ports); });
}

}  // namespace carrovan
