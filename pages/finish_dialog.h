#pragma once

#include "pages/wizard_page_dialog.h"

namespace carrovan {

// The last page: what was done.
class CFinishDialog : public WizardPageDialog {
 public:
  using WizardPageDialog::WizardPageDialog;

  void ShowOutcome(const std::wstring& text) const;

 protected:
  int TemplateNumber() const override;
  std::span<const ControlLook> Looks() const override;
  UnnamedStatics UnnamedStaticsLook() const override { return UnnamedStatics::kTransparent; }
  void FillControls() override;
};

}  // namespace carrovan
