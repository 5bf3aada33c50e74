#include "cli/command_line.h"
#include "text/text.h"

int main(int argc, char** argv) {
  std::vector<std::wstring> arguments;
  for (int i = 1; i < argc; ++i) arguments.push_back(carrovan::FromUtf8(argv[i]));
  const auto console = carrovan::OpenConsole();
  return static_cast<int>(carrovan::RunCommandLine(arguments, *console));
}
