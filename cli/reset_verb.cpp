#include "cli/applied_run.h"
#include "cli/command_line_view.h"
#include "cli/verbs.h"
#include "environment/installed_versions.h"
#include "environment/version_folders.h"
#include "package/staging_folder.h"
#include "reset/reset_run.h"

namespace carrovan {
namespace {

std::optional<AppliedRun> Refuse(const Session& session, const std::wstring& reason) {
  session.Complain(reason);
  return std::nullopt;
}

std::optional<AppliedRun> ResetVersion(const Session& session, const ResetOptions& options,
                                       const Machine& machine) {
  CommandLineView view(session, L"");
  ProductContext context;
  if (!LoadProductContext(context, machine, view)) return std::nullopt;
  if (!PassesLiveKeyCheck(view, machine.registry, context)) return std::nullopt;
  if (!PrepareVersionFolders(context, machine)) {
    return Refuse(session,
                  L"The folders of version " + context.humanReadableVersion + L" cannot be told");
  }
  CategoryChecklist checklist = CategoryChecklist::ForReset(context);
  if (!CheckChosen(session, options.categories, L"for this product", checklist)) {
    return std::nullopt;
  }
  WizardState state;
  InitializePackageState(state.package, context, machine);
  const StagingFolder staging(context, machine);
  if (!staging.IsMade()) {
    return Refuse(session, L"No staging folder can be made in the temporary path");
  }
  RegistryTool tool(machine.interpreter, machine.clock, RegistryToolPace::kWaitForEnd);
  ImportReport report = RunReset({context, state.package, machine, tool, view}, checklist);
  return AppliedRun{std::move(report), view.FinishText(), OutcomesOf(checklist, L"reset", L"kept"),
                    context};
}

}  // namespace

ExitStatus RunResetVerb(const Session& session, const ResetOptions& options) {
  if (const auto refused = RefuseUnknownLabels(session, options.categories)) return *refused;
  if (!options.yes && !options.run.dryRun)
    return session.Misused(L"--yes is needed: the reset removes settings");
  const auto owned = session.OpenMachine();
  if (!owned) return ExitStatus::kFailed;
  const Machine machine = owned->Ports();
  if (session.RefuseBesideProduct(machine.processes)) return ExitStatus::kFailed;
  const PointBegun about{L"reset", machine.product.HumanReadableVersion(), {}};
  if (!options.run.dryRun) SweepRunFolders(machine);
  return RunAsChosen(session, options.run, about, machine,
                     [&options](const Session& on, const Machine& ports, LineLog&) {
                       return ResetVersion(on, options, ports);
                     });
}

}  // namespace carrovan
