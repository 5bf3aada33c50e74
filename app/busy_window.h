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

  // After a dialog: shows the wait cursor again and paints what the dialog covered, which would
  // else wait for the end of the run.
  void Resume() const;

 private:
  HWND window_;
  HCURSOR formerCursor_;
};

}  // namespace carrovan
