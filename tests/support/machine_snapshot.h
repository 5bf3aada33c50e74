#pragma once

#include "preview/machine_changes.h"
#include "tests/support/memory_machine.h"

namespace carrovan {

// Everything that a machine in memory holds, for a comparison of two moments that knows nothing of
// how the machine is built.
struct MachineSnapshot {
  struct File {
    std::wstring path;  // as it is spelled
    bool isFolder = false;
    bool isReadOnly = false;
    std::string bytes;

    bool operator==(const File&) const = default;
  };
  struct Value {
    std::wstring key;
    RegistryValue value;

    bool operator==(const Value&) const = default;
  };

  std::map<std::u16string, File> files;                                  // by folded path
  std::map<std::pair<RegistryHive, std::u16string>, std::wstring> keys;  // spelled, by folded path
  std::map<std::pair<RegistryHive, std::u16string>, Value> values;  // by folded key, zero and name

  bool operator==(const MachineSnapshot&) const = default;
};

MachineSnapshot TakeSnapshot(const MemoryMachine& machine);

// The difference of two moments, in the order that the changes of a machine have.
MachineChanges DifferenceOf(const MachineSnapshot& before, const MachineSnapshot& after);

// Each change as a line, for a comparison and its message. The names of folders that are named by a
// GUID, which differ from run to run, are made the same.
std::vector<std::string> LinesOf(const MachineChanges& changes);
std::string WithoutGuids(const std::wstring& text);

}  // namespace carrovan
