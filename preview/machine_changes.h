#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/file_operations.h"
#include "platform/machine.h"
#include "platform/registry.h"
#include "preview/overlay_registry.h"
#include "preview/overlay_tree.h"

namespace carrovan {

// What is otherwise than before on a machine. Only what really differs: a file that was written
// again with the same bytes is no change, a name in another case is the same name. What lies below
// an added or removed folder or key is reported one by one. A file in place of a folder, or the
// reverse, is a removal and an addition.

enum class Change { kAdded, kReplaced, kRemoved };

struct FileChange {
  std::wstring path;
  Change change = Change::kAdded;
  bool isFolder = false;
  FileImage before;  // absent for what was added; of what was removed without a sum of its content
  FileImage after;   // absent for what was removed
};

struct KeyChange {
  RegistryHive hive = RegistryHive::kCurrentUser;
  std::wstring path;
  Change change = Change::kAdded;  // or kRemoved
};

struct ValueChange {
  RegistryHive hive = RegistryHive::kCurrentUser;
  std::wstring key;
  std::wstring name;  // empty for the key's default value
  std::optional<RegistryValue> before;
  std::optional<RegistryValue> after;
};

// Each list is in the order of CompareNames: by path, and by hive, key and name.
struct MachineChanges {
  std::vector<FileChange> files;
  std::vector<KeyChange> keys;
  std::vector<ValueChange> values;

  // No changes, but touched: the same before and after.
  std::vector<FileChange> rewrittenFiles;
  std::vector<ValueChange> rewrittenValues;

  bool IsEmpty() const { return files.empty() && keys.empty() && values.empty(); }
};

// Fills the files in which an overlay differs from the machine below it.
void AddFileChanges(const OverlayTree& tree, const FileReader& overlay, const FileReader& machine,
                    MachineChanges& changes);

// The same for the keys and values in which an overlay differs from the registry below it.
void AddRegistryChanges(const OverlayRegistry& overlay, const RegistryReader& machine,
                        MachineChanges& changes);

// Compares a machine after a run with what was foreseen of the run, also where it was to leave the
// same content. One line for each file, key and value that is not as it was to become.
std::vector<std::wstring> UnfulfilledChanges(const MachineChanges& foreseen,
                                             const Machine& machine);

// How many files, keys and values that looks at.
std::size_t CountForeseen(const MachineChanges& foreseen);

}  // namespace carrovan
