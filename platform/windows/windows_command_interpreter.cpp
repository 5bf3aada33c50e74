#include "platform/windows/windows_command_interpreter.h"

#include <windows.h>

#include <shellapi.h>

#include "platform/windows/handles.h"

namespace carrovan {
namespace {

class RunningProcess : public RunningCommand {
 public:
  explicit RunningProcess(KernelObject process) : process_(std::move(process)) {}

  bool WaitForEnd() override {
    if (!process_) return false;
    WaitForSingleObject(process_.Get(), INFINITE);
    DWORD status = 0;
    return GetExitCodeProcess(process_.Get(), &status) != FALSE && status == 0;
  }

 private:
  KernelObject process_;
};

}  // namespace

std::unique_ptr<RunningCommand> WindowsCommandInterpreter::Start(const std::wstring& parameters) {
  SHELLEXECUTEINFOW start = {};
  start.cbSize = sizeof(start);
  // What ShellExecuteW does, which itself gives no process to wait for: no message box on failure,
  // and the start is over when the call returns.
  start.fMask = SEE_MASK_NOCLOSEPROCESS | SEE_MASK_FLAG_NO_UI | SEE_MASK_NOASYNC;
  start.lpVerb = L"open";
  start.lpFile = L"cmd.exe";
  start.lpParameters = parameters.c_str();
  start.nShow = SW_HIDE;
  if (ShellExecuteExW(&start) == FALSE) return nullptr;
  return std::make_unique<RunningProcess>(KernelObject(start.hProcess));
}

}  // namespace carrovan
