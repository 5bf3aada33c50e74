#pragma once

#include <windows.h>

namespace carrovan {

// Dots per inch at which a window is drawn; 96 is 100 percent.
int DotsPerInch(HWND window);

// Pixels at 96 dots per inch in pixels of the window.
int ScaledPixels(HWND window, int pixels);

}  // namespace carrovan
