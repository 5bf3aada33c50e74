#pragma once

#include <memory>
#include <string>

namespace carrovan {

// A command that was started. Letting go of it does not end the command.
class RunningCommand {
 public:
  virtual ~RunningCommand() = default;

  // Returns when the command has ended. False when it ended with another status than 0, or when
  // there is nothing to wait for.
  virtual bool WaitForEnd() = 0;
};

// The system's command interpreter, started without a window.
class CommandInterpreter {
 public:
  virtual ~CommandInterpreter() = default;

  // Starts the interpreter with these parameters ("/C reg export ...") and returns at once; the
  // caller owns the result. It works in the system's folder, so that a tool is the system's own
  // whatever lies in the folder of the moment. Null when it could not be started.
  virtual std::unique_ptr<RunningCommand> Start(const std::wstring& parameters) = 0;
};

}  // namespace carrovan
