#include "platform/windows/window_scale.h"

namespace carrovan {
namespace {

int DotsPerInchOfScreen() {
  const HDC screen = GetDC(nullptr);
  const int dots = GetDeviceCaps(screen, LOGPIXELSY);
  ReleaseDC(nullptr, screen);
  return dots;
}

}  // namespace

int DotsPerInch(HWND window) {
  // Systems before Windows 10 have one scale for everything, and not this function.
  using GetDpiForWindowFunction = UINT(WINAPI*)(HWND);
  const auto getDpiForWindow = reinterpret_cast<GetDpiForWindowFunction>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32.dll"), "GetDpiForWindow")));
  const int dots = getDpiForWindow != nullptr ? static_cast<int>(getDpiForWindow(window)) : 0;
  return dots > 0 ? dots : DotsPerInchOfScreen();
}

int ScaledPixels(HWND window, int pixels) { return MulDiv(pixels, DotsPerInch(window), 96); }

}  // namespace carrovan
