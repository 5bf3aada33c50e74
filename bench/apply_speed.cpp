#include <filesystem>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "package/put_in_place.h"
#include "platform/file_operations.h"
#include "platform/sandbox/sandbox_machine.h"
#include "text/text.h"

// Lays the tree C:\Staging of a sandbox over C:\Profile, or wipes a folder of drive C:, as an
// import and a reset do: what bench/apply_benchmark holds against cp -r and rm -r.

namespace carrovan {
namespace {

bool LayOver(const Machine& machine) {
  RunObserver observer;
  ProductContext context;
  context.stagingFolder = L"C:\\Staging\\";
  PacedRegistryTool tool(*machine.registryTool, *machine.clock, RegistryToolPace::kWaitForEnd);
  RunReport report;
  const bool complete =
      LayOverProfile({context, L"C:\\Profile\\", machine, tool, observer}, report);
  for (const std::wstring& path : report.unextracted) {
    std::cerr << ToUtf8(TextOfUnextracted(path)) << '\n';
  }
  return complete;
}

}  // namespace
}  // namespace carrovan

int main(int argc, char** argv) {
  using namespace carrovan;
  const std::vector<std::string_view> arguments(argv + 1, argv + argc);
  if (arguments.size() < 2) {
    std::cerr << "usage: apply_speed overlay ROOT | apply_speed wipe ROOT FOLDER\n";
    return 2;
  }
  const auto opened = SandboxMachine::Open(FromUtf8(arguments[1]));
  if (!opened.object) {
    std::cerr << ToUtf8(opened.reason) << '\n';
    return 1;
  }
  const Machine machine = opened.object->Ports();
  if (arguments[0] == "overlay") return LayOver(machine) ? 0 : 1;
  return WipeFolder(*machine.files, FromUtf8(arguments[2])) ? 0 : 1;
}
