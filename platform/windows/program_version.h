#pragma once

#include <string>

namespace carrovan {

// The running program's version by its version resource ("1.2.3"); empty when it has none.
std::wstring ProgramVersion();

}  // namespace carrovan
