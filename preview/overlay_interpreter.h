#pragma once

#include "platform/command_interpreter.h"
#include "platform/file_system.h"
#include "platform/registry_editor.h"

namespace carrovan {

// A command interpreter that knows the registry tool's import and nothing else, on the files and
// the registry of an overlay. The work is done or has failed when Start returns; any other command
// line does nothing and fails.
class OverlayInterpreter : public CommandInterpreter {
 public:
  // Both outlive it.
  OverlayInterpreter(const FileReader& files, RegistryEditor& registry)
      : files_(files), registry_(registry) {}

  // Never null.
  std::unique_ptr<RunningCommand> Start(const std::wstring& parameters) override;

 private:
  bool Import(const std::wstring& file);

  const FileReader& files_;
  RegistryEditor& registry_;
};

}  // namespace carrovan
