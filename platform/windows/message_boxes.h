#pragma once

#include <windows.h>

#include <string>

namespace carrovan {

// Each returns when the box was answered. `owner` may be null.

// No caption, no icon, OK.
void ShowPlainMessageBox(HWND owner, const std::wstring& text);

// The program's name as caption, a warning icon, OK.
void ShowApplicationMessageBox(HWND owner, const std::wstring& text);

// A question icon, Yes and No; true for Yes.
bool AskInMessageBox(HWND owner, const std::wstring& question);

}  // namespace carrovan
