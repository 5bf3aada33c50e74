#pragma once

#include <memory>
#include <string>
#include <vector>

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

  // Null, and nothing is started, for the import of a file that names another key, that cannot be
  // read or that is not understood whole (RegFormScan).
  std::unique_ptr<RunningCommand> Start(const std::wstring& parameters) override;

 private:
  bool MayBeImported(std::wstring_view quotedPath) const;

  CommandInterpreter& interpreter_;
  const FileReader& files_;
  const std::wstring company_;
};

// A command interpreter that imports every registry file, of a package that the user trusts, and
// notes those that are not understood whole: the registry tool may make of them what a preview does
// not foresee and a restore point does not keep.
class NotingInterpreter : public CommandInterpreter {
 public:
  NotingInterpreter(CommandInterpreter& interpreter, const FileReader& files)
      : interpreter_(interpreter), files_(files) {}

  std::unique_ptr<RunningCommand> Start(const std::wstring& parameters) override;

  // One line for each: the file and what is not understood in it.
  const std::vector<std::wstring>& NotUnderstood() const { return notUnderstood_; }

 private:
  CommandInterpreter& interpreter_;
  const FileReader& files_;
  std::vector<std::wstring> notUnderstood_;
};

}  // namespace carrovan
