#pragma once

#include <memory>
#include <string>

#include "platform/machine.h"

namespace carrovan {

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
