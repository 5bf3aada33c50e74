#pragma once

#include "platform/command_interpreter.h"

namespace carrovan {

// cmd.exe, started by the shell without a window.
class WindowsCommandInterpreter : public CommandInterpreter {
 public:
  std::unique_ptr<RunningCommand> Start(const std::wstring& parameters) override;
};

}  // namespace carrovan
