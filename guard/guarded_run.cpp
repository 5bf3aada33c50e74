#include "guard/guarded_run.h"

#include "guard/room_check.h"
#include "guard/run_lock.h"
#include "package/staging_folder.h"
#include "preview/overlay_machine.h"
#include "restore/recorded_machine.h"
#include "restore/restore_point.h"
#include "text/path_text.h"

namespace carrovan {
namespace {

class NoLog : public LineLog {
 public:
  void WriteLine(std::wstring_view) override {}
};

// Passes the lines on and keeps them.
class KeptLog : public LineLog {
 public:
  explicit KeptLog(LineLog& next) : next_(next) {}

  void WriteLine(std::wstring_view line) override {
    next_.WriteLine(line);
    lines.emplace_back(line);
  }

  std::vector<std::wstring> lines;

 private:
  LineLog& next_;
};

// A legacy package names its version itself, which is known only when it has run.
void TakeVersion(GuardReport& report) {
  if (report.about.version.empty()) report.about.version = report.outcome.context.selectedVersion;
}

void ForgetFilesIn(const std::wstring& path, MachineChanges& changes) {
  const std::wstring folder = TidyPath(path);
  for (auto* files : {&changes.files, &changes.rewrittenFiles}) {
    std::erase_if(*files,
                  [&folder](const FileChange& change) { return IsAtOrBelow(change.path, folder); });
  }
}

// What the run would change; nothing, with the reason in the report, without a place to try it out.
std::optional<MachineChanges> TryOut(const Machine& machine, const GuardChoice& choice,
                                     const Run& run, LineLog& log, GuardReport& report) {
  const OrReason<OverlayMachine> opened = OverlayMachine::Open(machine);
  if (!opened.object) {
    report.failure = GuardFailure::kNoPlaceForTrial;
    report.reason = opened.reason;
    return std::nullopt;
  }
  OverlayMachine& overlay = *opened.object;
  const Machine after = overlay.Ports();
  report.outcome = run(after, log);
  MachineChanges changes = overlay.Changes();
  if (!choice.ownFolder.empty()) ForgetFilesIn(choice.ownFolder, changes);
  if (choice.onTrial && report.WasCarriedOut()) {
    choice.onTrial({changes, report.outcome, machine, after});
  }
  return changes;
}

// What a run leaves there of its own has another name each time.
void ForgetTemporaryFiles(const Machine& machine, MachineChanges& changes) {
  ForgetFilesIn(machine.folders->TempPath().value_or(L""), changes);
}

SystemCode TakeOwnFolder(const GuardChoice& choice, ChangeRecorder& recorder) {
  return choice.ownFolder.empty() ? kSystemOk : recorder.TakeScratch(choice.ownFolder);
}

// Why there is not enough room for a restore point; empty when there is. Only where that is in
// doubt is the run tried out, which nothing may come of in the report.
std::wstring LackOfRoom(const Machine& machine, const Run& run,
                        const std::optional<MachineChanges>& foreseen) {
  if (HasPlentyOfRoom(machine)) return {};
  GuardReport trial;
  NoLog log;
  const auto changes = foreseen ? foreseen : TryOut(machine, {}, run, log, trial);
  return changes ? RoomThatLacks(machine, *changes) : trial.reason;
}

void RunRecorded(const Machine& machine, const GuardChoice& choice, const Run& run, LineLog& log,
                 const std::optional<MachineChanges>& foreseen, GuardReport& report) {
  report.reason = LackOfRoom(machine, run, foreseen);
  if (!report.reason.empty()) {
    report.failure = GuardFailure::kNoRestorePoint;
    return;
  }
  const OrReason<ChangeRecorder> begun = ChangeRecorder::Begin(machine, report.about);
  if (!begun.object) {
    report.failure = GuardFailure::kNoRestorePoint;
    report.reason = begun.reason;
    return;
  }
  ChangeRecorder& recorder = *begun.object;
  if (const SystemCode code = TakeOwnFolder(choice, recorder); code != kSystemOk) {
    report.failure = GuardFailure::kNoRestorePoint;
    report.reason = choice.ownFolder + L": " + DescribeSystemCode(code);
    recorder.End();
    return;
  }
  RecordedMachine recorded(machine, recorder);
  KeptLog kept(log);
  report.outcome = run(recorded.Ports(), kept);
  if (report.WasCarriedOut() && report.about.version.empty()) {
    TakeVersion(report);
    recorder.Describe(report.about);
  }
  if (recorder.End(kept.lines)) report.restorePoint = recorder.Id();
}

void RunDry(const Machine& machine, const GuardChoice& choice, const Run& run, LineLog& log,
            GuardReport& report) {
  std::optional<MachineChanges> foreseen = TryOut(machine, choice, run, log, report);
  if (!foreseen) return;
  report.changes = std::move(*foreseen);
  TakeVersion(report);
}

void RunInEarnest(const Machine& machine, const GuardChoice& choice, const Run& run, LineLog& log,
                  GuardReport& report) {
  std::optional<MachineChanges> foreseen;
  if (choice.verify || choice.onTrial) {
    NoLog noLog;
    foreseen = TryOut(machine, choice, run, noLog, report);
    if (!foreseen) return;
  }
  if (choice.noRestorePoint) {
    report.outcome = run(machine, log);
    TakeVersion(report);
  } else {
    RunRecorded(machine, choice, run, log, foreseen, report);
  }
  if (choice.verify && report.WasCarriedOut()) {
    ForgetTemporaryFiles(machine, *foreseen);
    report.foreseen = CountForeseen(*foreseen);
    report.differences = UnfulfilledChanges(*foreseen, machine);
  }
}

}  // namespace

GuardReport RunGuarded(const Machine& machine, const GuardChoice& choice, const PointBegun& about,
                       LineLog& log, const Run& run) {
  GuardReport report;
  report.about = about;
  if (choice.dryRun) {
    RunDry(machine, choice, run, log, report);
    return report;
  }
  const OrReason<RunLock> lock = RunLock::Take(machine, about.verb);
  if (!lock.object) {
    report.failure = GuardFailure::kAnotherRun;
    report.reason = lock.reason;
    return report;
  }
  SweepRunFolders(machine);
  RunInEarnest(machine, choice, run, log, report);
  return report;
}

}  // namespace carrovan
