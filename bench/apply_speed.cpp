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

class SilentView : public WizardView {
 public:
  void ShowMessage(const std::wstring& text) override { std::cerr << ToUtf8(text) << '\n'; }
  void ShowApplicationMessage(const std::wstring& text) override { ShowMessage(text); }
  std::optional<std::wstring> ChooseSaveFile(const SaveFileQuestion&) override { return {}; }
  void SetFinishText(const std::wstring&) override {}
  void CloseWizard() override {}
};

bool LayOver(const Machine& machine) {
  SilentView view;
  ProductContext context;
  context.stagingFolder = L"C:\\Staging\\";
  PacedRegistryTool tool(*machine.registryTool, *machine.clock, RegistryToolPace::kWaitForEnd);
  RunReport report;
  return LayOverProfile({context, L"C:\\Profile\\", machine, tool, view}, report);
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
