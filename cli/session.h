#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "cli/exit_status.h"
#include "platform/console.h"
#include "platform/native_machine.h"
#include "platform/process_list.h"

namespace carrovan {

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

  // True, after saying so, while the product runs: what is changed under its feet would be lost
  // when it ends.
  bool RefuseBesideProduct(const ProcessList& processes) const;

  // Files and archives without a product, or null after saying why there are none.
  std::unique_ptr<HostFiles> OpenFiles() const;

 private:
  Console& console_;
};

}  // namespace carrovan
