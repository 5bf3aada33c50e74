#include "wizard/wizard_guard.h"

#include "environment/version_folders.h"
#include "text/path_text.h"
#include "wizard/changes_list.h"
#include "wizard/run_summary.h"

namespace carrovan {
namespace {

GuardChoice ChoiceFor(const WizardParts& parts) {
  GuardChoice choice;
  choice.ownFolder = WithoutTrailingBackslashes(parts.context.stagingFolder);
  return choice;
}

void SaveList(const WizardParts& parts, const std::wstring& heading,
              const std::vector<ListedLine>& lines) {
  const auto path = parts.frame.ChooseSaveFile(
      {.defaultExtension = L".txt", .filter = parts.texts.Text(StringId::kTextFiles)});
  if (!path || path->empty()) return;
  const SystemCode code = parts.machine.files->WriteBytes(*path, ListAsFile(heading, lines));
  if (code == kSystemOk) return;
  parts.frame.ShowMessage(parts.texts.Filled(StringId::kNotSaved, {DescribeSystemCode(code)}));
}

// Nothing, after the user was shown which, while another run is at work.
std::optional<GuardReport> RunAlone(const WizardParts& parts, const GuardChoice& choice,
                                    const PointBegun& about, const Run& run) {
  GuardReport report = RunGuarded(parts.machine, choice, about, parts.log, run);
  if (report.failure != GuardFailure::kAnotherRun) return report;
  ShowAnotherRun(parts, report.reason);
  return std::nullopt;
}

}  // namespace

std::optional<GuardReport> RunWithRestorePoint(const WizardParts& parts, const PointBegun& about,
                                               const Run& run) {
  GuardChoice choice = ChoiceFor(parts);
  auto report = RunAlone(parts, choice, about, run);
  if (!report || report->failure != GuardFailure::kNoRestorePoint) return report;
  const std::wstring question = parts.texts.Filled(StringId::kNoRestorePoint, {report->reason});
  if (!parts.frame.AskYesNo(question)) return std::nullopt;
  choice.noRestorePoint = true;
  return RunAlone(parts, choice, about, run);
}

void ShowChangesOf(const WizardParts& parts, const PointBegun& about, StringId heading,
                   const Run& run) {
  parts.frame.ShowProgress(0, parts.texts.Text(StringId::kTryingOut));
  GuardChoice choice = ChoiceFor(parts);
  choice.dryRun = true;
  const GuardReport report = RunGuarded(parts.machine, choice, about, parts.log, run);
  parts.frame.HideProgress();
  if (report.failure != GuardFailure::kNone) {
    return parts.frame.ShowMessage(parts.texts.Filled(StringId::kNoChangesKnown, {report.reason}));
  }
  const RunReport& outcome = report.outcome.report;
  const std::vector<ListedLine> lines =
      ListChanges(MakePreviewReport(report.changes, outcome,
                                    CategoryPlaces(report.outcome.context, parts.machine)),
                  outcome.emptied, parts.texts);
  if (lines.empty()) return ShowMessage(parts, StringId::kNothingWouldChange);
  ListQuestion window;
  window.text = parts.texts.Text(heading);
  window.lines = lines;
  window.save = [&] { SaveList(parts, window.text, lines); };
  parts.frame.AskWithList(window);
}

void ShowFinish(const WizardParts& parts, const GuardReport& report, StringId done) {
  parts.frame.SetFinishText(report.outcome.finishText);
  FinishDetails details;
  details.lines = SummaryOfRun(report, done, parts.texts);
  details.canUndo = !report.restorePoint.empty();
  parts.frame.SetFinishDetails(details);
}

}  // namespace carrovan
