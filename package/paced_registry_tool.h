#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>

#include "platform/registry_tool.h"
#include "platform/system_facts.h"

namespace carrovan {

// How the program keeps step with the registry tool, which runs as a process of its own.
enum class RegistryToolPace {
  kFixedPause,  // 100 ms after each export, 1 s after all imports: a window must stay alive
  kWaitForEnd,  // each tool is waited for before its work is used: nothing is missed
};

// How often a tool that is waited for is started for one key or file before it counts as failed.
inline constexpr int kRegistryToolAttempts = 3;

// The registry tool at one of these paces.
class PacedRegistryTool {
 public:
  // Both outlive it. `exportsAtATime` is how many exports may run side by side where they are
  // waited for.
  PacedRegistryTool(RegistryTool& tool, Clock& clock, RegistryToolPace pace,
                    std::size_t exportsAtATime = 1)
      : tool_(tool), clock_(clock), pace_(pace), exportsAtATime_(exportsAtATime) {}

  // `keyPath` begins with its hive's full name. An existing file is overwritten. Always true.
  bool RegExportKey(const std::wstring& keyPath, const std::wstring& filePath);

  // RegExportKey in two halves: other exports may be started in between, as many in all as may run
  // at a time. What was started goes to the second half, and is null when it could not be.
  std::unique_ptr<RunningTool> StartExport(const std::wstring& keyPath,
                                           const std::wstring& filePath);
  void FinishExport(std::unique_ptr<RunningTool> running);

  // How many exports may run side by side; 1 with fixed pauses.
  std::size_t ExportsAtATime() const {
    return IsDoneWithFiles() ? std::max<std::size_t>(exportsAtATime_, 1) : 1;
  }

  // True when the last export that was finished is known to have failed, which with fixed pauses is
  // never known. A file that it left behind is then not to be trusted.
  bool LastExportFailed() const { return lastExportFailed_; }

  // True when what an export has written can be looked at, since the tool has ended.
  bool IsDoneWithFiles() const { return pace_ == RegistryToolPace::kWaitForEnd; }

  // False when the tool is known to have failed at each attempt; with fixed pauses there is one,
  // and it fails only when the tool could not be started.
  [[nodiscard]] bool RegImportFile(const std::wstring& filePath);

  // Called once when the last file was given to RegImportFile: with fixed pauses, the time that the
  // tools are left to end.
  void PauseAfterImports();

 private:
  RegistryTool& tool_;
  Clock& clock_;
  RegistryToolPace pace_;
  std::size_t exportsAtATime_;
  bool lastExportFailed_ = false;
};

}  // namespace carrovan
