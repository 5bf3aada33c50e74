#pragma once

#include <memory>
#include <string>

#include "platform/posix/path_mapper.h"
#include "platform/registry_tool.h"
#include "platform/sandbox/sandbox_registry.h"

namespace carrovan {

// A command interpreter that knows the registry tool and nothing else:
//   /C reg export "KEY" "FILE" /y
//   /C reg import "FILE"
// The work is done or has failed when Start returns. Any other command line does nothing and fails.
class SandboxInterpreter : public CommandInterpreter {
 public:
  SandboxInterpreter(SandboxRegistry& registry, const PathMapper& paths)
      : registry_(registry), paths_(paths) {}

  // Never null.
  std::unique_ptr<RunningTool> Start(const std::wstring& parameters) override;

 private:
  bool Export(std::wstring_view key, const std::wstring& file) const;
  bool Import(const std::wstring& file);

  SandboxRegistry& registry_;
  const PathMapper& paths_;
};

}  // namespace carrovan
