#pragma once

#include "platform/registry_tool.h"

namespace carrovan {

// cmd.exe, started by the shell without a window.
class WindowsCommandInterpreter : public CommandInterpreter {
 public:
  std::unique_ptr<RunningTool> Start(const std::wstring& parameters) override;
};

}  // namespace carrovan
