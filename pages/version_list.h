#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

namespace carrovan {

// A drop-down list of versions as the user sees them.

// Replaces the entries and selects the last one.
void FillVersionList(HWND list, const std::vector<std::wstring>& years);

// The text of the selected entry; nothing when none is selected.
std::optional<std::wstring> SelectedYear(HWND list);

}  // namespace carrovan
