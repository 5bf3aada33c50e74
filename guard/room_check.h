#pragma once

#include <string>

#include "platform/machine.h"
#include "preview/machine_changes.h"

namespace carrovan {

// Whether the disk can take a restore point, looked at before anything changes: a run that stops
// half way for want of room is worse than one that does not begin.

// True when there is room for everything that any run could have to keep, or when the free room
// cannot be told. Costs next to nothing.
bool HasPlentyOfRoom(const Machine& machine);

// One line with the number of bytes that a restore point of these changes needs and of those that
// are free; empty when they are enough.
std::wstring RoomThatLacks(const Machine& machine, const MachineChanges& changes);

}  // namespace carrovan
