#pragma once

#include <optional>
#include <string>

#include "platform/machine.h"

namespace carrovan {

// Whether the disk of temporary files can take what an import makes of a package there: its items,
// and the archive that carries them to their places. A run that unpacks a part of a package puts a
// part of it in place.

// One line with the number of bytes that are needed and of those that are free; nothing when they
// are enough, when they cannot be told, or when there is no such package.
std::optional<std::wstring> RoomThatLacksToUnpack(const Machine& machine,
                                                  const std::wstring& packagePath);

}  // namespace carrovan
