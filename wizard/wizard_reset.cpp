#include "wizard/wizard_reset.h"

#include "package/staging_folder.h"
#include "reset/reset_run.h"
#include "wizard/run_progress.h"
#include "wizard/wizard_export.h"
#include "wizard/wizard_guard.h"

namespace carrovan {
namespace {

// A reset works on categories and lays hardly any file over the profile.
constexpr std::size_t kExpectedItems = 20;

PointBegun PointOf(const WizardParts& parts) {
  return {L"reset", parts.context.humanReadableVersion, {}};
}

RunOutcome ResetOn(const WizardParts& parts, const Machine& machine, RegistryToolPace pace,
                   RunObserver& observer, ProductContext& context, const CategorySet& chosen) {
  PacedRegistryTool tool(*machine.registryTool, *machine.clock, pace);
  RunOutcome outcome;
  outcome.report = RunReset({context, parts.state.package, machine, tool, observer}, chosen);
  outcome.finishText = ResetFinishText(context, parts.texts);
  outcome.offered = OfferedOnReset(context);
  outcome.chosen = chosen;
  outcome.context = context;
  return outcome;
}

CategorySet TickedCategories(const WizardParts& parts) {
  return CheckedCategories(parts.frame.Tree(WizardPage::kResetCategories));
}

}  // namespace

bool EnterResetCategories(const WizardParts& parts) {
  if (!HasVersionFolders(parts)) return false;
  // The last steps of a reset are those of an import; they must find no package to apply.
  RenewStagingFolder(parts.context, parts.machine);
  BuildCategoryTree(parts.frame.Tree(WizardPage::kResetCategories), OfferedOnReset(parts.context),
                    parts.texts);
  parts.frame.SetBackupText(L"");
  return true;
}

void ShowChangesOfReset(const WizardParts& parts) {
  ProductContext context = parts.context;
  RunObserver observer;
  ShowChangesOf(parts, PointOf(parts), StringId::kChangesOfReset,
                [&](const Machine& machine, LineLog&) {
                  return ResetOn(parts, machine, RegistryToolPace::kWaitForEnd, observer, context,
                                 TickedCategories(parts));
                });
}

ResetAnswer ConfirmAndReset(const WizardParts& parts) {
  if (!parts.frame.AskYesNo(parts.texts.Text(StringId::kConfirmReset))) {
    return ResetAnswer::kDeclined;
  }
  if (!EnsureProductEnded(parts)) return ResetAnswer::kRefused;
  RunProgress progress(parts.frame, kExpectedItems,
                       &parts.frame.Tree(WizardPage::kResetCategories));
  const CategorySet chosen = TickedCategories(parts);
  const auto report =
      RunWithRestorePoint(parts, PointOf(parts), [&](const Machine& machine, LineLog&) {
        return ResetOn(parts, machine, RegistryToolPace::kFixedPause, progress, parts.context,
                       chosen);
      });
  if (!report) return ResetAnswer::kRefused;
  ShowUnextracted(parts, report->outcome.report.unextracted);
  ShowFinish(parts, *report, StringId::kCategoryReset);
  return ResetAnswer::kDone;
}

}  // namespace carrovan
