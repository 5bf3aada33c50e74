#pragma once

#include <memory>
#include <string>

#include "platform/archive_library.h"
#include "platform/file_system.h"
#include "platform/profile_file.h"
#include "platform/registry.h"
#include "platform/registry_tool.h"
#include "platform/system_facts.h"

namespace carrovan {

// An object, or why there is none.
template <typename T>
struct OrReason {
  std::unique_ptr<T> object;
  std::wstring reason;  // when there is none: one line
};

// The ports of one machine, real or in a folder. A plain value, which is copied to replace one of
// them. Owns nothing: whoever makes a machine keeps its parts alive. No port is null.
struct Machine {
  FileSystem* files;
  RegistryEditor* registry;
  KnownFolders* folders;
  GuidSource* guids;
  ProfileFile* profiles;
  ProductIdentity* product;
  ArchiveLibrary* archives;
  RegistryTool* registryTool;
  Clock* clock;
  UserIdentity* user;
  CodePage* codePage;
  ProcessList* processes;
  OwnProcess* self;
};

// Owns the parts of a machine.
class OwnedMachine {
 public:
  virtual ~OwnedMachine() = default;
  virtual Machine Ports() = 0;
};

using MachineOrReason = OrReason<OwnedMachine>;

// The machine that this program runs on: its registry, its user, its CAD product. Only Windows has
// one; elsewhere the reason says so.
MachineOrReason OpenNativeMachine();

// Host files and the built-in zip library, for the operations that need no CAD product. Paths are
// the host's own.
class HostFiles {
 public:
  virtual ~HostFiles() = default;
  virtual FileSystem& Files() = 0;
  virtual ArchiveLibrary& Archives() = 0;
  // Null when the file is missing or is not a zip archive.
  virtual std::unique_ptr<ArchiveExaminer> Examine(const std::wstring& archivePath) = 0;
};

std::unique_ptr<HostFiles> OpenHostFiles();

}  // namespace carrovan
