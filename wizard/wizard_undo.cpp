#include "wizard/wizard_undo.h"

#include <algorithm>

#include "guard/run_lock.h"
#include "restore/point_check.h"
#include "restore/restore_point.h"
#include "restore/undo_run.h"
#include "text/path_text.h"

namespace carrovan {
namespace {

std::optional<RestorePoint> LastToUndo(const Machine& machine) {
  const auto root = RestoreRoot(*machine.folders);
  if (!root) return std::nullopt;
  for (const std::wstring& id : RestorePointIds(*machine.files, *root)) {
    auto point = ReadRestorePoint(*machine.files, *root, id);
    if (point && point->state != PointState::kUndone) return point;
  }
  return std::nullopt;
}

// "2026-03-04 05:06:07 UTC" of the id "2026-03-04T050607Z".
std::wstring TimeOf(const RestorePoint& point) {
  const std::wstring& id = point.id;
  return id.substr(0, 10) + L" " + id.substr(11, 2) + L":" + id.substr(13, 2) + L":" +
         id.substr(15, 2) + L" UTC";
}

bool Confirms(const WizardParts& parts, const RestorePoint& point) {
  const StringId question =
      point.about.package.empty() ? StringId::kConfirmUndoReset : StringId::kConfirmUndoImport;
  return parts.frame.AskYesNo(
      parts.texts.Filled(question, {point.about.version, TimeOf(point), point.about.package}));
}

std::vector<ListedLine> LinesOf(const std::vector<std::wstring>& texts) {
  std::vector<ListedLine> lines;
  for (const std::wstring& text : texts) lines.push_back({0, text});
  return lines;
}

// Whether a journal that names what no ordinary run changes is to be played all the same.
bool IsWanted(const WizardParts& parts, const RestorePoint& point,
              const std::vector<std::wstring>& refused) {
  const bool mayBeTrusted = RefusalsOfPoint(point, true, parts.machine).empty();
  ListQuestion question;
  question.text =
      parts.texts.Text(mayBeTrusted ? StringId::kUndoDistrusted : StringId::kUndoRefused);
  question.lines = LinesOf(refused);
  if (mayBeTrusted) {
    question.yes = StringId::kYes;
    question.no = StringId::kNo;
  }
  return parts.frame.AskWithList(question);
}

UndoReport Undo(const WizardParts& parts, const RestorePoint& point, const UndoChoice& choice) {
  parts.frame.ShowProgress(0, parts.texts.Text(StringId::kUndoing));
  UndoReport report = UndoChanges(point, choice, parts.machine);
  parts.frame.HideProgress();
  return report;
}

// What stays behind is listed. True when the user wants what was kept to be overwritten too.
bool Report(const WizardParts& parts, const UndoReport& report) {
  const std::wstring count = std::to_wstring(report.restored);
  if (report.kept.empty() && report.problems.empty()) {
    parts.frame.ShowMessage(parts.texts.Filled(StringId::kUndone, {count}));
    return false;
  }
  std::vector<std::wstring> lines = report.kept;
  std::ranges::copy(report.problems, std::back_inserter(lines));
  const bool anyKept = !report.kept.empty();
  ListQuestion question;
  question.text = parts.texts.Filled(
      anyKept ? StringId::kUndoneButKept : StringId::kUndoneWithProblems, {count});
  question.lines = LinesOf(lines);
  if (anyKept) {
    question.yes = StringId::kOverwriteToo;
    question.no = StringId::kKeep;
  }
  return parts.frame.AskWithList(question);
}

// What is played back is what lies there now: a question may be open for long.
std::optional<RestorePoint> ReadAgain(const WizardParts& parts, const RestorePoint& point) {
  auto read = ReadRestorePoint(*parts.machine.files, RemoveFileSpec(point.folder), point.id);
  if (!read) ShowMessage(parts, StringId::kNothingToUndo);
  return read;
}

// True when something was put back.
bool UndoAndReport(const WizardParts& parts, const RestorePoint& point) {
  UndoChoice choice;
  UndoReport report = Undo(parts, point, choice);
  if (!report.refused.empty()) {
    if (!IsWanted(parts, point, report.refused)) return false;
    choice.trusted = true;
    report = Undo(parts, point, choice);
  }
  const bool anyRestored = report.restored > 0;
  if (!Report(parts, report)) return anyRestored;
  choice.force = true;
  Report(parts, Undo(parts, point, choice));
  return true;
}

}  // namespace

bool UndoLastRun(const WizardParts& parts) {
  const auto shown = LastToUndo(parts.machine);
  if (!shown) {
    ShowMessage(parts, StringId::kNothingToUndo);
    return false;
  }
  if (!Confirms(parts, *shown) || !EnsureProductEnded(parts)) return false;
  const OrReason<RunLock> lock = RunLock::Take(parts.machine, L"undo");
  if (!lock.object) {
    ShowAnotherRun(parts, lock.reason);
    return false;
  }
  const auto point = ReadAgain(parts, *shown);
  return point && UndoAndReport(parts, *point);
}

}  // namespace carrovan
