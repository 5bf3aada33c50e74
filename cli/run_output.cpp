#include "cli/run_output.h"

#include <nlohmann/json.hpp>

#include "cli/json_text.h"
#include "cli/paths_output.h"
#include "cli/preview_output.h"
#include "cli/report_output.h"
#include "environment/version_folders.h"
#include "report/run_page.h"
#include "text/text.h"

namespace carrovan {
namespace {

std::wstring TextOfOtherRun(const std::wstring& otherRun) {
  return L"Another run is at work: " + otherRun;
}

// Keeps the lines for a document that is printed in the end.
class CollectedLog : public LineLog {
 public:
  void WriteLine(std::wstring_view line) override { lines.emplace_back(line); }

  std::vector<std::wstring> lines;
};

class NoLog : public LineLog {
 public:
  void WriteLine(std::wstring_view) override {}
};

// Why a run was not even begun.
std::wstring TextOfFailure(const GuardReport& report) {
  switch (report.failure) {
    case GuardFailure::kAnotherRun:
      return TextOfOtherRun(report.reason);
    case GuardFailure::kNoRestorePoint:
      return L"No restore point can be made: " + report.reason +
             L"; --no-restore-point goes on without one";
    default:
      return report.reason;
  }
}

RunFacts FactsOf(const RunChoice& choice, const PointBegun& about, const Machine& machine) {
  return {about, choice.dryRun, choice.verify && !choice.dryRun, machine.clock->Now(),
          NameOfProgram()};
}

// What is printed of one run.
class RunOutput {
 public:
  RunOutput(const Session& session, const RunChoice& choice, const CategoryWords& words,
            const GuardReport& report)
      : session_(session), choice_(choice), words_(words), report_(report) {}

  ExitStatus Print(const Machine& machine, const std::vector<std::wstring>& log) const {
    if (report_.failure != GuardFailure::kNone) return session_.Fail(TextOfFailure(report_));
    const ExitStatus status = Complain();
    if (!report_.WasCarriedOut()) return status;
    if (choice_.dryRun) {
      PrintTrial(machine, status);
    } else if (choice_.json) {
      PrintJsonText(session_, Document(status, log));
    } else {
      PrintLines();
    }
    return status;
  }

 private:
  void ComplainOf(const std::vector<std::wstring>& lines) const {
    for (const std::wstring& line : lines) session_.Complain(line);
  }

  // Each item that was skipped, failed or differs, or why nothing was done.
  ExitStatus Complain() const {
    const RunOutcome& outcome = report_.outcome;
    for (const std::wstring& path : outcome.report.unextracted) {
      session_.Complain(TextOfUnextracted(path));
    }
    ComplainOf(outcome.notices);
    ComplainOf(outcome.refusals);
    if (!outcome.refusals.empty()) return ExitStatus::kFailed;
    ComplainOf(outcome.report.problems);
    ComplainOfEmptied();
    ComplainOf(report_.differences);
    const bool whole = outcome.report.IsComplete() && outcome.report.emptied.empty() &&
                       report_.differences.empty();
    return whole ? ExitStatus::kDone : ExitStatus::kPartly;
  }

  void ComplainOfEmptied() const {
    const std::wstring what = choice_.dryRun ? L": would be emptied" : L": emptied";
    for (const SettingCategory category : report_.outcome.report.emptied) {
      session_.Complain(LabelOf(category) + what + L", since the package holds nothing of it");
    }
  }

  void PrintTrial(const Machine& machine, ExitStatus status) const {
    const RunOutcome& outcome = report_.outcome;
    const PreviewReport preview = MakePreviewReport(report_.changes, outcome.report,
                                                    CategoryPlaces(outcome.context, machine));
    if (choice_.json) {
      PrintPreviewJson(session_, preview, Heading(status));
    } else {
      PrintPreview(session_, preview, choice_.details);
    }
  }

  const std::wstring& WordFor(SettingCategory category) const {
    return report_.outcome.chosen.contains(category) ? words_.whenChosen : words_.whenNot;
  }

  static std::wstring LabelOf(SettingCategory category) {
    return std::wstring(Text(FindCategory(static_cast<int>(category))->label));
  }

  void PrintLines() const {
    for (const SettingCategory category : report_.outcome.offered) {
      session_.Print(LabelOf(category) + L": " + WordFor(category));
    }
    if (!report_.restorePoint.empty()) {
      session_.Print(L"Restore point: " + report_.restorePoint + L" ('undo' puts everything back)");
    }
    if (choice_.verify) {
      session_.Print(L"Read back: " + std::to_wstring(report_.foreseen) + L" items, " +
                     std::to_wstring(report_.differences.size()) + L" not as they were to become");
    }
    if (const auto count = report_.outcome.report.optionsSet) {
      session_.Print(L"Options set: " + std::to_wstring(*count));
    }
    PrintImportedPathCounts(session_, report_.outcome.report.paths);
    session_.Print(report_.outcome.finishText);
  }

  // What the documents of a run and of its preview have in common.
  nlohmann::json Heading(ExitStatus status) const {
    return {{"verb", ToUtf8(report_.about.verb)},
            {"version", ToUtf8(report_.about.version)},
            {"package", ToUtf8(report_.about.package)},
            {"dryRun", choice_.dryRun},
            {"exitStatus", static_cast<int>(status)},
            {"problems", TextsToJson(report_.outcome.report.problems)},
            {"emptied", EmptiedLabels()},
            {"paths", ImportedPathsJson(report_.outcome.report.paths)}};
  }

  nlohmann::json EmptiedLabels() const {
    nlohmann::json labels = nlohmann::json::array();
    for (const SettingCategory category : report_.outcome.report.emptied) {
      labels.push_back(ToUtf8(LabelOf(category)));
    }
    return labels;
  }

  nlohmann::json Document(ExitStatus status, const std::vector<std::wstring>& log) const {
    const RunOutcome& outcome = report_.outcome;
    nlohmann::json categories = nlohmann::json::array();
    for (const SettingCategory category : outcome.offered) {
      categories.push_back(
          {{"label", ToUtf8(LabelOf(category))}, {"outcome", ToUtf8(WordFor(category))}});
    }
    nlohmann::json document = Heading(status);
    document.update({{"finishText", ToUtf8(outcome.finishText)},
                     {"categories", categories},
                     {"unextracted", outcome.report.unextracted.size()},
                     {"dropped", DroppedJson(outcome.report.dropped)},
                     {"log", TextsToJson(log)},
                     {"optionsSet", nullptr},
                     {"verification", nullptr},
                     {"restorePoint", nullptr}});
    if (outcome.report.optionsSet) document["optionsSet"] = *outcome.report.optionsSet;
    if (choice_.verify) {
      document["verification"] = {{"items", report_.foreseen},
                                  {"differences", TextsToJson(report_.differences)}};
    }
    if (!report_.restorePoint.empty()) document["restorePoint"] = ToUtf8(report_.restorePoint);
    return document;
  }

  const Session& session_;
  const RunChoice& choice_;
  const CategoryWords& words_;
  const GuardReport& report_;
};

}  // namespace

ExitStatus RefuseBesides(const Session& session, const std::wstring& otherRun) {
  return session.Fail(TextOfOtherRun(otherRun));
}

ExitStatus RefuseRun(const Session& session, const RunChoice& choice, const PointBegun& about,
                     const Machine& machine, const std::wstring& reason) {
  const ExitStatus status = session.Fail(reason);
  return ReportFile(session, choice.report)
      .Write(PageOfRefusal(FactsOf(choice, about, machine), {reason}), status);
}

ExitStatus RunAndPrint(const Session& session, const RunChoice& choice, const PointBegun& about,
                       const CategoryWords& words, const Machine& machine, const Run& run) {
  const ReportFile page(session, choice.report);
  if (const auto refusal = page.Refusal()) return session.Fail(*refusal);
  SeenChanges changes;
  GuardChoice guard = static_cast<const GuardChoice&>(choice);
  if (page.IsWanted()) guard.onTrial = [&](const Trial& trial) { changes = LookAt(trial); };
  ConsoleLog console(session);
  CollectedLog collected;
  NoLog none;
  LineLog& shown = choice.verbose ? static_cast<LineLog&>(console) : none;
  LineLog& log = choice.json ? static_cast<LineLog&>(collected) : shown;
  const GuardReport report = RunGuarded(machine, guard, about, log, run);
  const ExitStatus status =
      RunOutput(session, choice, words, report).Print(machine, collected.lines);
  const RunFacts facts = FactsOf(choice, report.about, machine);
  const bool wasBegun = report.failure == GuardFailure::kNone;
  return page.Write(
      wasBegun ? PageOfRun(facts, report, changes) : PageOfRefusal(facts, {TextOfFailure(report)}),
      status);
}

}  // namespace carrovan
