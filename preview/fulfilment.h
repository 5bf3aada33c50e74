#pragma once

#include <string>
#include <vector>

#include "platform/machine.h"
#include "preview/machine_changes.h"

namespace carrovan {

// Compares a machine after a run with what was foreseen of the run, also where it was to leave the
// same content. One line for each file, key and value that is not as it was to become.
std::vector<std::wstring> UnfulfilledChanges(const MachineChanges& foreseen,
                                             const Machine& machine);

// How many files, keys and values that looks at.
std::size_t CountForeseen(const MachineChanges& foreseen);

}  // namespace carrovan
