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

  // Shows the wait cursor again after a dialog had its own.
  static void ShowWaitCursor();

 private:
  HWND window_;
  HCURSOR formerCursor_;
};

}  // namespace carrovan
