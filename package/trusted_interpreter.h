#pragma once

#include <memory>
#include <string>

#include "platform/command_interpreter.h"
#include "platform/file_system.h"

namespace carrovan {

// A command interpreter that looks into a registry file right before the registry tool imports it.
// Two readers may take one archive for two packages, and the rewriting changes registry files: what
// lies on the disk at that moment is what counts. Other commands pass through.
class TrustedInterpreter : public CommandInterpreter {
 public:
  // Files may name keys of this company only (RegistryFileScan).
  TrustedInterpreter(CommandInterpreter& interpreter, const FileReader& files,
                     std::wstring company);

  // Null, and nothing is started, for the import of a file that names another key or that cannot be
  // read.
  std::unique_ptr<RunningCommand> Start(const std::wstring& parameters) override;

 private:
  bool MayBeImported(std::wstring_view quotedPath) const;

  CommandInterpreter& interpreter_;
  const FileReader& files_;
  const std::wstring company_;
};

}  // namespace carrovan
