#pragma once

#include <windows.h>

#include <string>

namespace carrovan {

// What a screen reader calls a control. Buttons and the like give their own text by the system's
// accessibility interface; of fields, lists, trees and bars the system takes the label in front of
// them, which not every system's interface does.
std::wstring AccessibleName(HWND window);

}  // namespace carrovan
