#include "package/registry_tool.h"

#include "platform/command_interpreter.h"

namespace carrovan {
namespace {

// Enough for the tool to write one key of ordinary size.
constexpr std::chrono::milliseconds kPauseAfterExport{100};

// Enough for all files of a package that were started before.
constexpr std::chrono::milliseconds kPauseAfterImports{1000};

}  // namespace

RegistryTool::RegistryTool(CommandInterpreter& interpreter, Clock& clock, RegistryToolPace pace)
    : interpreter_(interpreter), clock_(clock), pace_(pace) {}

bool RegistryTool::RegExportKey(const std::wstring& keyPath, const std::wstring& filePath) {
  const auto command = interpreter_.Start(RegExportCommand(keyPath, filePath));
  if (pace_ == RegistryToolPace::kFixedPause) {
    clock_.Pause(kPauseAfterExport);
  } else {
    lastExportFailed_ = !command || !command->WaitForEnd();
  }
  return true;
}

bool RegistryTool::RegImportFile(const std::wstring& filePath) {
  const std::wstring parameters = RegImportCommand(filePath);
  if (pace_ == RegistryToolPace::kFixedPause) return interpreter_.Start(parameters) != nullptr;
  for (int attempt = 0; attempt < kRegistryToolAttempts; ++attempt) {
    const auto command = interpreter_.Start(parameters);
    if (command && command->WaitForEnd()) return true;
  }
  return false;
}

void RegistryTool::PauseAfterImports() {
  if (pace_ == RegistryToolPace::kFixedPause) clock_.Pause(kPauseAfterImports);
}

}  // namespace carrovan
