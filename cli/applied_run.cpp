#include "cli/applied_run.h"

#include <nlohmann/json.hpp>

#include "cli/console_log.h"
#include "cli/json_text.h"
#include "preview/fulfilment.h"
#include "preview/overlay_machine.h"
#include "restore/recorded_machine.h"

namespace carrovan {
namespace {

// Keeps the lines for a document that is printed in the end.
class CollectedLog : public LineLog {
 public:
  void WriteLine(std::wstring_view line) override { lines.emplace_back(line); }

  std::vector<std::wstring> lines;
};

nlohmann::json ToJson(const std::vector<std::wstring>& lines) {
  nlohmann::json array = nlohmann::json::array();
  for (const std::wstring& line : lines) array.push_back(ToUtf8(line));
  return array;
}

// The words of a run that only serves to foresee another are not shown twice.
class SilentConsole : public Console {
 public:
  void Out(std::wstring_view) override {}
  void Err(std::wstring_view) override {}
  bool ErrIsTerminal() const override { return false; }
  bool IsOutWhole() const override { return true; }
};

// What the run would change, or nothing after saying why that cannot be told. A run that is refused
// changes nothing.
std::optional<MachineChanges> Foresee(const Session& session, const Machine& machine,
                                      const Run& run) {
  std::wstring reason;
  const auto overlay = OverlayMachine::Open(machine, reason);
  if (!overlay) {
    session.Fail(reason);
    return std::nullopt;
  }
  SilentConsole silent;
  Session quiet(silent);
  quiet.root = session.root;
  CollectedLog log;
  static_cast<void>(run(quiet, overlay->Ports(), log));
  return overlay->Changes();
}

// One run from its restore point to what is printed of it.
class ChosenRun {
 public:
  ChosenRun(const Session& session, const RunChoice& choice, const PointBegun& about,
            const Machine& machine)
      : session_(session), choice_(choice), about_(about), machine_(machine) {}

  ExitStatus Do(const Run& run) {
    if (choice_.verify && !(foreseen_ = Foresee(session_, machine_, run))) {
      return ExitStatus::kFailed;
    }
    if (!choice_.noRestorePoint && !BeginRestorePoint()) return ExitStatus::kFailed;
    ConsoleLog console(session_);
    LineLog& log = choice_.json ? static_cast<LineLog&>(log_) : console;
    const auto applied = RunRecorded(run, log);
    const bool kept = recorder_ && recorder_->End();
    if (kept) restorePoint_ = recorder_->Id();
    return applied ? Conclude(*applied) : ExitStatus::kFailed;
  }

 private:
  bool BeginRestorePoint() {
    std::wstring reason;
    recorder_ = ChangeRecorder::Begin(machine_, about_, reason);
    if (recorder_) return true;
    session_.Fail(L"No restore point can be made: " + reason +
                  L"; --no-restore-point goes on without one");
    return false;
  }

  std::optional<AppliedRun> RunRecorded(const Run& run, LineLog& log) {
    if (!recorder_) return run(session_, machine_, log);
    RecordedMachine recorded(machine_, *recorder_);
    return run(session_, recorded.Ports(), log);
  }

  ExitStatus Conclude(const AppliedRun& applied) {
    for (const std::wstring& problem : applied.report.problems) session_.Complain(problem);
    const ExitStatus status = applied.report.IsComplete() ? ExitStatus::kDone : ExitStatus::kPartly;
    if (choice_.json) {
      PrintJsonText(session_, Document(applied, status));
    } else {
      PrintLines(applied);
    }
    return status;
  }

  void PrintLines(const AppliedRun& applied) {
    for (const CategoryOutcome& category : applied.categories) {
      session_.Print(category.label + L": " + category.outcome);
    }
    if (!restorePoint_.empty()) {
      session_.Print(L"Restore point: " + restorePoint_ + L" ('undo' puts everything back)");
    }
    if (foreseen_) session_.Print(VerificationText());
    session_.Print(applied.finishText);
  }

  std::size_t ForeseenCount() const {
    return foreseen_->files.size() + foreseen_->keys.size() + foreseen_->values.size();
  }

  std::wstring VerificationText() const {
    return L"Read back: " + std::to_wstring(ForeseenCount()) + L" changes, " +
           std::to_wstring(differences_.size()) + L" not as they were to become";
  }

  nlohmann::json Document(const AppliedRun& applied, ExitStatus status) {
    nlohmann::json categories = nlohmann::json::array();
    for (const CategoryOutcome& category : applied.categories) {
      categories.push_back(
          {{"label", ToUtf8(category.label)}, {"outcome", ToUtf8(category.outcome)}});
    }
    nlohmann::json document = {{"verb", ToUtf8(about_.verb)},
                               {"version", ToUtf8(about_.version)},
                               {"package", ToUtf8(about_.package)},
                               {"exitStatus", static_cast<int>(status)},
                               {"finishText", ToUtf8(applied.finishText)},
                               {"categories", categories},
                               {"problems", ToJson(applied.report.problems)},
                               {"unextracted", applied.report.unextracted},
                               {"log", ToJson(log_.lines)},
                               {"verification", nullptr},
                               {"restorePoint", nullptr}};
    if (foreseen_) {
      document["verification"] = {{"changes", ForeseenCount()},
                                  {"differences", ToJson(differences_)}};
    }
    if (!restorePoint_.empty()) document["restorePoint"] = ToUtf8(restorePoint_);
    return document;
  }

  const Session& session_;
  const RunChoice& choice_;
  const PointBegun& about_;
  const Machine& machine_;
  CollectedLog log_;
  std::optional<MachineChanges> foreseen_;
  std::vector<std::wstring> differences_;
  std::unique_ptr<ChangeRecorder> recorder_;
  std::wstring restorePoint_;
};

}  // namespace

ExitStatus RunAsChosen(const Session& session, const RunChoice& choice, const PointBegun& about,
                       const Machine& machine, const Run& run) {
  return ChosenRun(session, choice, about, machine).Do(run);
}

}  // namespace carrovan
