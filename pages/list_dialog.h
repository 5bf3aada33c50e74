#pragma once

#include "pages/resource_texts.h"
#include "platform/windows/dialog.h"
#include "wizard/wizard_frame.h"

namespace carrovan {

// A window with lines to read, which Ctrl+C copies, and at most one thing to agree to.
class CListDialog : public Dialog {
 public:
  // Everything outlives the dialog.
  CListDialog(const ResourceModule& resources, const ListQuestion& question)
      : resources_(resources), texts_(resources), question_(question) {}

  // True when the user agrees. Returns when the window was closed.
  bool Ask(HWND owner);

 protected:
  bool OnInitDialog() override;
  bool OnCommand(int control, int notification) override;
  bool OnNotify(const NMHDR& header) override;

 private:
  void FillLines() const;
  void ShowButton(int control, StringId text, bool visible) const;
  void CopyLines() const;

  const ResourceModule& resources_;
  const ResourceTexts texts_;
  const ListQuestion& question_;
  bool agreed_ = false;
};

}  // namespace carrovan
