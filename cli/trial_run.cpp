#include "cli/trial_run.h"

#include "preview/overlay_machine.h"

namespace carrovan {
namespace {

// Lets through what a trial may say.
class TrialConsole : public Console {
 public:
  TrialConsole(Console& console, TrialWords words) : console_(console), words_(words) {}

  void Out(std::wstring_view) override {}
  void Err(std::wstring_view text) override {
    if (words_ == TrialWords::kRefusals) console_.Err(text);
  }
  bool ErrIsTerminal() const override { return false; }
  bool IsOutWhole() const override { return true; }

 private:
  Console& console_;
  TrialWords words_;
};

class NoLog : public LineLog {
 public:
  void WriteLine(std::wstring_view) override {}
};

}  // namespace

std::optional<TrialRun> TryOut(const Session& session, const Machine& machine, const Run& run,
                               TrialWords words) {
  std::wstring reason;
  const auto overlay = OverlayMachine::Open(machine, reason);
  if (!overlay) {
    session.Fail(reason);
    return std::nullopt;
  }
  TrialConsole console(session.console(), words);
  Session trial(console);
  trial.root = session.root;
  NoLog log;
  TrialRun result;
  result.applied = run(trial, overlay->Ports(), log);
  result.changes = overlay->Changes();
  return result;
}

}  // namespace carrovan
