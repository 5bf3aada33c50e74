#pragma once

#include <string>
#include <vector>

#include "platform/machine.h"
#include "restore/restore_point.h"

namespace carrovan {

// Why a restore point is not to be played back: one line for each file, folder or key in it that no
// run changes. A journal is a file like any other, and whoever can write one must not have an undo
// remove the user's documents or set what starts a program. Empty for the journal of a run.
//
// A run changes what lies in the product's folders below the user's application data and below the
// makers' keys of the user's registry; the import of a `trusted` package also what lies elsewhere
// below the application data and any key. Its own folders bear a GUID's name in the temporary path.
// It goes through a link only where one stands for a folder of the product or of its version, and
// what it removes of links it keeps itself.
std::vector<std::wstring> RefusalsOfPoint(const RestorePoint& point, bool trusted,
                                          const Machine& machine);

}  // namespace carrovan
