#pragma once

#include "environment/wizard_state.h"
#include "pages/wizard_page_dialog.h"

namespace carrovan {

// The first page: what does the user want to do?
class CStartDialog : public WizardPageDialog {
 public:
  CStartDialog(const PageSurroundings& surroundings, WizardState& state, ProductContext& context)
      : WizardPageDialog(surroundings), state_(state), context_(context) {}

 protected:
  int TemplateNumber() const override;
  std::span<const ControlLook> Looks() const override;
  UnnamedStatics UnnamedStaticsLook() const override { return UnnamedStatics::kBlackText; }
  void FillControls() override;
  bool OnCommand(int control, int notification) override;

 private:
  WizardState& state_;
  ProductContext& context_;
};

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
