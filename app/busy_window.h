#pragma once

#include <windows.h>

namespace carrovan {

// While it exists the user waits: the window has been painted and the wait cursor is shown. What
// was typed, clicked or asked to close meanwhile is dropped at the end, since it was meant for what
// the window showed before.
class BusyWindow {
 public:
  explicit BusyWindow(HWND window);
  ~BusyWindow();
  BusyWindow(const BusyWindow&) = delete;
  BusyWindow& operator=(const BusyWindow&) = delete;

  // After a dialog in between: paints what it covered and shows the wait cursor again.
  static void Resume(HWND window);

 private:
  HWND window_;
  HCURSOR formerCursor_;
};

}  // namespace carrovan
