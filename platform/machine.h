#pragma once

#include <memory>
#include <string>

#include "platform/archive_library.h"
#include "platform/command_interpreter.h"
#include "platform/file_system.h"
#include "platform/profile_file.h"
#include "platform/registry.h"
#include "platform/system_facts.h"

namespace carrovan {

// The ports of one machine, real or in a folder. Owns nothing: whoever makes a machine keeps its
// parts alive.
struct Machine {
  FileSystem& files;
  RegistryReader& registry;
  KnownFolders& folders;
  GuidSource& guids;
  ProfileFile& profiles;
  ProductIdentity& product;
  ArchiveLibrary& archives;
  CommandInterpreter& interpreter;
  Clock& clock;
  RegistryEditor& registryEditor;
  UserIdentity& user;
  CodePage& codePage;
  ProcessList& processes;
};

// The same machine with one part replaced.
Machine WithFiles(const Machine& machine, FileSystem& files);
Machine WithFolders(const Machine& machine, KnownFolders& folders);
Machine WithGuids(const Machine& machine, GuidSource& guids);
Machine WithProfiles(const Machine& machine, ProfileFile& profiles);
Machine WithArchives(const Machine& machine, ArchiveLibrary& archives);
Machine WithInterpreter(const Machine& machine, CommandInterpreter& interpreter);
Machine WithClock(const Machine& machine, Clock& clock);

// Owns the parts of a machine.
class OwnedMachine {
 public:
  virtual ~OwnedMachine() = default;
  virtual Machine Ports() = 0;
};

struct MachineOrReason {
  std::unique_ptr<OwnedMachine> machine;  // null when there is none
  std::wstring reason;                    // then: one line that says why and what to do
};

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
