#pragma once

#include "platform/windows/dialog.h"
#include "platform/windows/gdi_handles.h"

namespace carrovan {

// What this program is, and which version of it.
class CAboutDlg : public Dialog {
 public:
  explicit CAboutDlg(const ResourceModule& resources) : resources_(resources) {}

  // Returns when the box was closed.
  void Show(HWND owner);

 protected:
  bool OnInitDialog() override;
  bool OnCommand(int control, int notification) override;

 private:
  const ResourceModule& resources_;
  IconHandle icon_;
};

}  // namespace carrovan
