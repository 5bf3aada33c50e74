#pragma once

#include <optional>
#include <string>

namespace carrovan {

// The language that the CAD product runs in ("en-us"), as its maker's library tells. Nothing when
// the library is missing, has no language support or does not give a name.
std::optional<std::wstring> CurrentTarvikLanguage();

}  // namespace carrovan
