#pragma once

#include <string>
#include <vector>

#include "cli/session.h"
#include "platform/console.h"

namespace carrovan {

// Runs one command line; the arguments do not hold the program's own name.
ExitStatus RunCommandLine(const std::vector<std::wstring>& arguments, Console& console);

}  // namespace carrovan
