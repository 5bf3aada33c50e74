#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace carrovan {

// Names stored in an archive come from strangers. A name is fit to be put behind a destination
// folder only if it cannot leave that folder and is a name that Windows can give a file.

// Why a stored name is refused ("leads out of the folder"), or nothing when it is fit. A trailing
// separator (a stored folder) is allowed. Both slashes are separators.
std::optional<std::wstring> RefusalOfStoredName(std::wstring_view name);

}  // namespace carrovan
