#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

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

// A command that was carried out while it was started.
class EndedCommand : public RunningCommand {
 public:
  explicit EndedCommand(bool succeeded) : succeeded_(succeeded) {}
  bool WaitForEnd() override { return succeeded_; }

 private:
  bool succeeded_;
};

// The command lines with which the system's registry tool is started, as the command interpreter
// gets them.

std::wstring RegExportCommand(const std::wstring& keyPath, const std::wstring& filePath);
std::wstring RegImportCommand(const std::wstring& filePath);

// Whether the name of a file can stand in such a command line: the interpreter puts a variable's
// value in place of its name between percent signs, also within quotes, and a quote ends the name.
bool IsPlainToInterpreter(std::wstring_view name);

// The file that a command line imports; nothing for any other command line.
std::optional<std::wstring> ImportedFile(const std::wstring& parameters);

}  // namespace carrovan
