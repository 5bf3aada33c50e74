#pragma once

#include <windows.h>

#include <optional>
#include <string>

#include "wizard/wizard_frame.h"

namespace carrovan {

// Each returns when the box was answered. `owner` may be null.

// No caption, no icon, OK.
void ShowPlainMessageBox(HWND owner, const std::wstring& text);

// The program's name as caption, a warning icon, OK.
void ShowApplicationMessageBox(HWND owner, const std::wstring& text);

// A question icon, Yes and No; true for Yes.
bool AskInMessageBox(HWND owner, const std::wstring& question);

// The system's own dialogs for choosing a file. Each gives the full path, or nothing when the user
// cancelled or there is no such dialog.
std::optional<std::wstring> AskForSaveFile(HWND owner, const SaveFileQuestion& question);
std::optional<std::wstring> AskForOpenFile(HWND owner, const OpenFileQuestion& question);

}  // namespace carrovan
