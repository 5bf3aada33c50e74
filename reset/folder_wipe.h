#pragma once

#include <string>

#include "platform/file_system.h"

namespace carrovan {

// Deletes everything below a folder and then the folder. A link, the folder itself included, is
// removed without touching what it leads to; one that leads nowhere is removed, too. Read-only
// files stay, and with them the folders above. Goes on after a failure; true only when everything
// is gone, also when the folder was not there at all.
bool WipeFolder(FileSystem& files, const std::wstring& folder);

}  // namespace carrovan
