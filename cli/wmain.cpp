#include "cli/command_line.h"
#include "platform/windows/shared_end.h"

int wmain(int argc, wchar_t** argv) {
  const std::vector<std::wstring> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
  const carrovan::SharedEnd end;
  const auto console = carrovan::OpenConsole();
  return static_cast<int>(carrovan::RunCommandLine(arguments, *console));
}
