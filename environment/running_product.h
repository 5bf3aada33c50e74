#pragma once

#include "platform/process_list.h"

namespace carrovan {

// True while the CAD product runs: settings that it holds open must not be moved under its feet.
bool IsProductRunning(const ProcessList& processes);

}  // namespace carrovan
