#include "app/busy_window.h"

namespace carrovan {
namespace {

void DropMessages(HWND window, UINT first, UINT last) {
  MSG message{};
  while (PeekMessageW(&message, window, first, last, PM_REMOVE) != FALSE) {
    if (message.message == WM_QUIT) {
      // The filter does not hold this one back; it is for the loop outside.
      PostQuitMessage(static_cast<int>(message.wParam));
      return;
    }
  }
}

}  // namespace

BusyWindow::BusyWindow(HWND window) : window_(window) {
  RedrawWindow(window_, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
  formerCursor_ = SetCursor(LoadCursorW(nullptr, IDC_WAIT));
}

BusyWindow::~BusyWindow() {
  DropMessages(nullptr, WM_NCMOUSEMOVE, WM_NCXBUTTONDBLCLK);
  DropMessages(nullptr, WM_KEYFIRST, WM_KEYLAST);
  DropMessages(nullptr, WM_MOUSEFIRST, WM_MOUSELAST);
  DropMessages(window_, WM_SYSCOMMAND, WM_SYSCOMMAND);
  DropMessages(window_, WM_CLOSE, WM_CLOSE);
  SetCursor(formerCursor_);
}

void BusyWindow::Resume() const {
  SetCursor(LoadCursorW(nullptr, IDC_WAIT));
  RedrawWindow(window_, nullptr, nullptr,
               RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_UPDATENOW | RDW_ALLCHILDREN);
}

}  // namespace carrovan
