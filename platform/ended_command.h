#pragma once

#include "platform/command_interpreter.h"

namespace carrovan {

// A command that was carried out while it was started.
class EndedCommand : public RunningCommand {
 public:
  explicit EndedCommand(bool succeeded) : succeeded_(succeeded) {}
  bool WaitForEnd() override { return succeeded_; }

 private:
  bool succeeded_;
};

}  // namespace carrovan
