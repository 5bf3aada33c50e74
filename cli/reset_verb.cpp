#include "cli/command_line_view.h"
#include "cli/staging.h"
#include "cli/verbs.h"
#include "environment/version_check.h"
#include "environment/version_folders.h"
#include "reset/reset_run.h"

namespace carrovan {
namespace {

ExitStatus ResetVersion(const Session& session, const ResetOptions& options, const Machine& machine,
                        CommandLineView& view, ProductContext& context) {
  if (!PassesLiveKeyCheck(view, machine.registry, context)) return ExitStatus::kFailed;
  if (!PrepareVersionFolders(context, machine)) {
    return session.Fail(L"The folders of version " + context.humanReadableVersion +
                        L" cannot be told");
  }
  CategoryChecklist checklist = CategoryChecklist::ForReset(context);
  if (!CheckChosen(session, options.categories, L"for this product", checklist)) {
    return ExitStatus::kFailed;
  }
  WizardState state;
  InitializePackageState(state.package, context, machine);
  const StagingFolder staging(context, machine);
  if (!staging.IsMade()) {
    return session.Fail(L"No staging folder can be made in the temporary path");
  }
  RegistryTool tool(machine.interpreter, machine.clock, RegistryToolPace::kWaitForEnd);
  const ImportReport report = RunReset({context, state.package, machine, tool, view}, checklist);
  PrintOutcomes(session, checklist, L"reset", L"kept");
  return session.Conclude(report, view.FinishText());
}

}  // namespace

ExitStatus RunResetVerb(const Session& session, const ResetOptions& options) {
  if (const auto refused = RefuseUnknownLabels(session, options.categories)) return *refused;
  const auto owned = session.OpenMachine();
  if (!owned) return ExitStatus::kFailed;
  const Machine machine = owned->Ports();
  if (session.RefuseBesideProduct(machine.processes)) return ExitStatus::kFailed;
  CommandLineView view(session, L"");
  ProductContext context;
  if (!LoadProductContext(context, machine, view)) return ExitStatus::kFailed;
  return ResetVersion(session, options, machine, view, context);
}

}  // namespace carrovan
