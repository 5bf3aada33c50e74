#pragma once

#include <windows.h>

#include <optional>
#include <string>

#include "wizard/wizard_frame.h"

namespace carrovan {

// The system's own dialogs for choosing a file. Each gives the full path, or nothing when the user
// cancelled or there is no such dialog.
std::optional<std::wstring> AskForSaveFile(HWND owner, const SaveFileQuestion& question);
std::optional<std::wstring> AskForOpenFile(HWND owner, const OpenFileQuestion& question);

}  // namespace carrovan
