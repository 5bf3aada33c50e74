#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace carrovan {

// A tool that was started. Letting go of it does not end the tool.
class RunningTool {
 public:
  virtual ~RunningTool() = default;

  // Returns when the tool has ended. False when it ended with another status than 0, or when there
  // is nothing to wait for.
  virtual bool WaitForEnd() = 0;
};

// A tool that had done its work, or failed, when it was started.
class EndedTool : public RunningTool {
 public:
  explicit EndedTool(bool succeeded) : succeeded_(succeeded) {}
  bool WaitForEnd() override { return succeeded_; }

 private:
  bool succeeded_;
};

// The system's own tool for registry files, a process beside this one. Each call returns at once;
// the caller owns the result, which is null when the tool could not be started.
class RegistryTool {
 public:
  virtual ~RegistryTool() = default;

  // Writes a key with everything below it to a file, over one that is there. `keyPath` begins with
  // its hive's full name.
  virtual std::unique_ptr<RunningTool> ExportKey(const std::wstring& keyPath,
                                                 const std::wstring& filePath) = 0;

  // Does what a registry file says.
  virtual std::unique_ptr<RunningTool> ImportFile(const std::wstring& filePath) = 0;
};

// The system's command interpreter, started without a window.
class CommandInterpreter {
 public:
  virtual ~CommandInterpreter() = default;

  // Starts the interpreter with these parameters ("/C reg export ...") and returns at once; the
  // caller owns the result. It works in the system's folder, so that a tool is the system's own
  // whatever lies in the folder of the moment. Null when it could not be started.
  virtual std::unique_ptr<RunningTool> Start(const std::wstring& parameters) = 0;
};

// The registry tool as the command interpreter starts it. This is the only place that puts its
// command lines together.
class InterpretedRegistryTool : public RegistryTool {
 public:
  // The interpreter outlives it.
  explicit InterpretedRegistryTool(CommandInterpreter& interpreter) : interpreter_(interpreter) {}

  std::unique_ptr<RunningTool> ExportKey(const std::wstring& keyPath,
                                         const std::wstring& filePath) override;
  std::unique_ptr<RunningTool> ImportFile(const std::wstring& filePath) override;

 private:
  CommandInterpreter& interpreter_;
};

// Whether the name of a file can stand in such a command line: the interpreter puts a variable's
// value in place of its name between percent signs, also within quotes, and a quote ends the name.
bool IsPlainToInterpreter(std::wstring_view name);

}  // namespace carrovan
