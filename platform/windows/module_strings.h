#pragma once

#include <string>

namespace carrovan {

// A text of this program's own string table, as the resource compiler put it there; empty when
// there is none of that number.
std::wstring LoadModuleString(unsigned number);

}  // namespace carrovan
