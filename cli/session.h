#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/console.h"
#include "platform/machine.h"

namespace carrovan {

// What the command line's exit status means to a script.
enum class ExitStatus : int {
  kDone = 0,
  kFailed = 1,  // failed or refused; one line on standard error says why
  kUsage = 2,   // the command line itself is wrong
  kPartly = 3,  // done, but an item was skipped or failed; each is named on standard error
};

// One run of the command line: where it prints and which machine it works on.
class Session {
 public:
  explicit Session(Console& console) : console_(console) {}

  // A sandbox folder to work on; empty for the machine itself.
  std::wstring root;

  Console& console() const { return console_; }

  // One line each.
  void Print(std::wstring_view line) const;
  void Complain(std::wstring_view line) const;

  // Says why on standard error and gives the status to return.
  ExitStatus Fail(std::wstring_view reason) const;
  ExitStatus Misused(std::wstring_view reason) const;

  // The machine with its CAD product, or null after saying why there is none.
  std::unique_ptr<OwnedMachine> OpenMachine() const;

  // The same for a verb that does without one: null where there is none, and on a system that has
  // no product only a sandbox that is named must be there. False when that is missing.
  bool OpenMachineIfAny(std::unique_ptr<OwnedMachine>& machine) const;

  // Files and archives without a product, or null after saying why there are none.
  std::unique_ptr<HostFiles> OpenFiles() const;

 private:
  Console& console_;
};

// A log whose lines are a verb's result.
class ConsoleLog : public LineLog {
 public:
  explicit ConsoleLog(const Session& session) : session_(session) {}

  void WriteLine(std::wstring_view line) override { session_.Print(line); }

 private:
  const Session& session_;
};

}  // namespace carrovan
