#include "package/paced_registry_tool.h"

namespace carrovan {
namespace {

// Enough for the tool to write one key of ordinary size.
constexpr std::chrono::milliseconds kPauseAfterExport{100};

// Enough for all files of a package that were started before.
constexpr std::chrono::milliseconds kPauseAfterImports{1000};

}  // namespace

bool PacedRegistryTool::RegExportKey(const std::wstring& keyPath, const std::wstring& filePath) {
  FinishExport(StartExport(keyPath, filePath));
  return true;
}

std::unique_ptr<RunningTool> PacedRegistryTool::StartExport(const std::wstring& keyPath,
                                                            const std::wstring& filePath) {
  return tool_.ExportKey(keyPath, filePath);
}

void PacedRegistryTool::FinishExport(std::unique_ptr<RunningTool> running) {
  if (pace_ == RegistryToolPace::kFixedPause) {
    clock_.Pause(kPauseAfterExport);
  } else {
    lastExportFailed_ = !running || !running->WaitForEnd();
  }
}

bool PacedRegistryTool::RegImportFile(const std::wstring& filePath) {
  if (pace_ == RegistryToolPace::kFixedPause) return tool_.ImportFile(filePath) != nullptr;
  for (int attempt = 0; attempt < kRegistryToolAttempts; ++attempt) {
    const auto running = tool_.ImportFile(filePath);
    if (running && running->WaitForEnd()) return true;
  }
  return false;
}

void PacedRegistryTool::PauseAfterImports() {
  if (pace_ == RegistryToolPace::kFixedPause) clock_.Pause(kPauseAfterImports);
}

}  // namespace carrovan
