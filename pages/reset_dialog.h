#pragma once

#include "pages/category_page_dialog.h"

namespace carrovan {

// Sent to the frame, with both parameters 0, when the user wants a backup before the reset.
inline constexpr UINT kBackupRequest = WM_USER + 2;

class CDialogReset : public CategoryPageDialog {
 public:
  using CategoryPageDialog::CategoryPageDialog;

 protected:
  int TemplateNumber() const override;
  Texts PageTexts() const override;
  void FillControls() override;
  bool OnCommand(int control, int notification) override;
};

}  // namespace carrovan
