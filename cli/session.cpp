#include "cli/session.h"

#include <algorithm>

#include "platform/sandbox/sandbox_machine.h"

namespace carrovan {
namespace {

// A script reads one line per finding, whatever line breaks a message holds.
std::wstring OneLine(std::wstring_view text) {
  std::wstring line(text);
  std::ranges::replace_if(
      line, [](wchar_t c) { return c == L'\n' || c == L'\r'; }, L' ');
  return line + L"\n";
}

}  // namespace

void Session::Print(std::wstring_view line) const { console_.Out(std::wstring(line) + L"\n"); }

void Session::Complain(std::wstring_view line) const { console_.Err(OneLine(line)); }

ExitStatus Session::Fail(std::wstring_view reason) const {
  Complain(reason);
  return ExitStatus::kFailed;
}

ExitStatus Session::Misused(std::wstring_view reason) const {
  Complain(reason);
  return ExitStatus::kUsage;
}

std::unique_ptr<OwnedMachine> Session::OpenMachine() const {
  MachineOrReason opened = root.empty() ? OpenNativeMachine() : SandboxMachine::Open(root);
  if (!opened.object) Complain(opened.reason);
  return std::move(opened.object);
}

bool Session::OpenMachineIfAny(std::unique_ptr<OwnedMachine>& machine) const {
  machine = root.empty() ? OpenNativeMachine().object : OpenMachine();
  return root.empty() || machine;
}

std::unique_ptr<HostFiles> Session::OpenFiles() const {
  if (root.empty()) return OpenHostFiles();
  FilesOrReason opened = OpenSandboxFiles(root);
  if (!opened.object) Complain(opened.reason);
  return std::move(opened.object);
}

}  // namespace carrovan
