#include "platform/windows/windows_command_interpreter.h"

#include <windows.h>

#include <shellapi.h>

#include "platform/windows/handles.h"

namespace carrovan {
namespace {

class RunningProcess : public RunningTool {
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

// Empty when the system does not know it.
std::wstring SystemFolder() {
  std::wstring folder(MAX_PATH, L'\0');
  const UINT length = GetSystemDirectoryW(folder.data(), MAX_PATH);
  folder.resize(length < MAX_PATH ? length : 0);
  return folder;
}

}  // namespace

std::unique_ptr<RunningTool> WindowsCommandInterpreter::Start(const std::wstring& parameters) {
  // The interpreter looks for a tool in the folder that it works in first of all, and the shell
  // looks there for the interpreter: what lies in the folder of the moment must not run for either.
  const std::wstring folder = SystemFolder();
  if (folder.empty()) return nullptr;
  const std::wstring interpreter = folder + L"\\cmd.exe";
  SHELLEXECUTEINFOW start = {};
  start.cbSize = sizeof(start);
  // What ShellExecuteW does, which itself gives no process to wait for: no message box on failure,
  // and the start is over when the call returns.
  start.fMask = SEE_MASK_NOCLOSEPROCESS | SEE_MASK_FLAG_NO_UI | SEE_MASK_NOASYNC;
  start.lpVerb = L"open";
  start.lpFile = interpreter.c_str();
  start.lpParameters = parameters.c_str();
  start.lpDirectory = folder.c_str();
  start.nShow = SW_HIDE;
  if (ShellExecuteExW(&start) == FALSE) return nullptr;
  return std::make_unique<RunningProcess>(KernelObject(start.hProcess));
}

}  // namespace carrovan
