#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "platform/machine.h"
#include "platform/posix/host_facts.h"
#include "platform/posix/host_file_system.h"
#include "platform/posix/path_mapper.h"
#include "platform/sandbox/mapped_files.h"
#include "platform/sandbox/sandbox_facts.h"
#include "platform/sandbox/sandbox_interpreter.h"
#include "platform/sandbox/sandbox_registry.h"

namespace carrovan {

// A whole machine kept in a folder:
//   product.ini   section "Product": CompanyShortName, ProductName, ProductVersion,
//                 HumanReadableVersion, StartupFolder, Language, UserName
//   registry/     one registry file per hive
//   C/            drive C:, and so on for other drives
class SandboxMachine : public OwnedMachine {
 public:
  // No machine when the folder or its product.ini is missing, when that names no user or one who
  // cannot have a folder, or when a hive cannot be read. Makes the user's temporary folder, which
  // every user of a real machine has.
  static MachineOrReason Open(const std::wstring& rootFolder);

  Machine Ports() override;

  // For whoever fills the machine.
  const PathMapper& Paths() const { return paths_; }
  SandboxRegistry& Registry() { return registry_; }

 private:
  SandboxMachine(const std::filesystem::path& root, SandboxProduct product);

  DrivePathMapper paths_;
  HostFileSystem files_;
  SandboxRegistry registry_;
  SandboxProduct product_;
  SandboxFolders folders_;
  RandomGuidSource guids_;
  SandboxProfileFile profiles_;
  ZipArchiveLibrary archives_;
  SandboxInterpreter interpreter_;
  InterpretedRegistryTool registryTool_{interpreter_};
  SleepingClock clock_;
  SandboxUser user_;
  Utf8CodePage codePage_;
  NoProcesses processes_;
  std::unique_ptr<OwnProcess> self_ = OpenHostProcess();
};

using FilesOrReason = OrReason<HostFiles>;

// Only the files of a sandbox, for what needs no product: its product.ini may be missing.
FilesOrReason OpenSandboxFiles(const std::wstring& rootFolder);

}  // namespace carrovan
