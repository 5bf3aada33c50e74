#include "cli/applied_run.h"

#include <nlohmann/json.hpp>

#include "cli/json_text.h"
#include "cli/preview_output.h"
#include "cli/session.h"
#include "cli/trial_run.h"
#include "preview/machine_changes.h"
#include "restore/recorded_machine.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

// Keeps the lines for a document that is printed in the end.
class CollectedLog : public LineLog {
 public:
  void WriteLine(std::wstring_view line) override { lines.emplace_back(line); }

  std::vector<std::wstring> lines;
};

// One run from its restore point to what is printed of it.
class ChosenRun {
 public:
  ChosenRun(const Session& session, const RunChoice& choice, const PointBegun& about,
            const Machine& machine)
      : session_(session), choice_(choice), about_(about), machine_(machine) {}

  ExitStatus Do(const Run& run) {
    if (choice_.dryRun) return Show(run);
    if (choice_.verify && !Foresee(run)) return ExitStatus::kFailed;
    if (!choice_.noRestorePoint && !BeginRestorePoint()) return ExitStatus::kFailed;
    ConsoleLog console(session_);
    LineLog& log = choice_.json ? static_cast<LineLog&>(log_) : console;
    const auto applied = RunRecorded(run, log);
    if (applied) TakeVersion(*applied);
    const bool kept = recorder_ && recorder_->End();
    if (kept) restorePoint_ = recorder_->Id();
    if (!applied) return ExitStatus::kFailed;
    if (choice_.verify) differences_ = UnfulfilledChanges(foreseen_, machine_);
    return Conclude(*applied);
  }

 private:
  // A legacy package names its version itself, which is known only now.
  void TakeVersion(const AppliedRun& applied) {
    if (!about_.version.empty()) return;
    about_.version = applied.context.selectedVersion;
    if (recorder_) recorder_->Describe(about_);
  }

  ExitStatus Show(const Run& run) {
    const auto trial = TryOut(session_, machine_, run, TrialWords::kRefusals);
    if (!trial || !trial->applied) return ExitStatus::kFailed;
    const AppliedRun& applied = *trial->applied;
    TakeVersion(applied);
    const ExitStatus status = ComplainOf(applied);
    const PreviewReport report = MakePreviewReport(trial->changes, applied.report,
                                                   CategoryPlaces(applied.context, machine_));
    if (choice_.json) {
      PrintPreviewJson(session_, report, Heading(applied, status));
    } else {
      PrintPreview(session_, report);
    }
    return status;
  }

  bool Foresee(const Run& run) {
    auto trial = TryOut(session_, machine_, run, TrialWords::kNone);
    if (!trial) return false;
    foreseen_ = std::move(trial->changes);
    ForgetTemporaryFiles();
    return true;
  }

  // What a run leaves there of its own has another name each time.
  void ForgetTemporaryFiles() {
    const std::wstring folder = WithTrailingBackslash(machine_.folders.TempPath().value_or(L""));
    for (auto* files : {&foreseen_.files, &foreseen_.rewrittenFiles}) {
      std::erase_if(*files, [&folder](const FileChange& change) {
        return CompareNames(change.path.substr(0, folder.size()), folder) == 0;
      });
    }
  }

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

  // Each item that was skipped, failed or differs.
  ExitStatus ComplainOf(const AppliedRun& applied) {
    for (const std::wstring& problem : applied.report.problems) session_.Complain(problem);
    for (const std::wstring& difference : differences_) session_.Complain(difference);
    const bool whole = applied.report.IsComplete() && differences_.empty();
    return whole ? ExitStatus::kDone : ExitStatus::kPartly;
  }

  ExitStatus Conclude(const AppliedRun& applied) {
    const ExitStatus status = ComplainOf(applied);
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
    if (choice_.verify) session_.Print(VerificationText());
    if (applied.report.optionsSet) session_.Print(OptionsText(*applied.report.optionsSet));
    session_.Print(applied.finishText);
  }

  static std::wstring OptionsText(std::size_t count) {
    return L"Options set: " + std::to_wstring(count);
  }

  std::wstring VerificationText() const {
    return L"Read back: " + std::to_wstring(CountForeseen(foreseen_)) + L" items, " +
           std::to_wstring(differences_.size()) + L" not as they were to become";
  }

  // What the documents of a run and of its preview have in common.
  nlohmann::json Heading(const AppliedRun& applied, ExitStatus status) const {
    return {{"verb", ToUtf8(about_.verb)},
            {"version", ToUtf8(about_.version)},
            {"package", ToUtf8(about_.package)},
            {"dryRun", choice_.dryRun},
            {"exitStatus", static_cast<int>(status)},
            {"problems", TextsToJson(applied.report.problems)}};
  }

  nlohmann::json Document(const AppliedRun& applied, ExitStatus status) {
    nlohmann::json categories = nlohmann::json::array();
    for (const CategoryOutcome& category : applied.categories) {
      categories.push_back(
          {{"label", ToUtf8(category.label)}, {"outcome", ToUtf8(category.outcome)}});
    }
    nlohmann::json document = Heading(applied, status);
    document.update({{"finishText", ToUtf8(applied.finishText)},
                     {"categories", categories},
                     {"unextracted", applied.report.unextracted},
                     {"dropped", DroppedJson(applied.report.dropped)},
                     {"log", TextsToJson(log_.lines)},
                     {"optionsSet", nullptr},
                     {"verification", nullptr},
                     {"restorePoint", nullptr}});
    if (applied.report.optionsSet) document["optionsSet"] = *applied.report.optionsSet;
    if (choice_.verify) {
      document["verification"] = {{"items", CountForeseen(foreseen_)},
                                  {"differences", TextsToJson(differences_)}};
    }
    if (!restorePoint_.empty()) document["restorePoint"] = ToUtf8(restorePoint_);
    return document;
  }

  const Session& session_;
  const RunChoice& choice_;
  PointBegun about_;
  const Machine& machine_;
  CollectedLog log_;
  MachineChanges foreseen_;  // when it is to be read back
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
