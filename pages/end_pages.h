#pragma once

#include "environment/wizard_state.h"
#include "pages/wizard_page_dialog.h"
#include "wizard/wizard_frame.h"

namespace carrovan {

// The first page: what does the user want to do?
class CStartDialog : public WizardPageDialog {
 public:
  CStartDialog(const PageSurroundings& surroundings, WizardState& state, ProductContext& context)
      : WizardPageDialog(surroundings), state_(state), context_(context) {}

  // Marks the choice of a mode that was not made by a click.
  void ShowMode(MigrationMode mode) const;

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

// Sent to the frame, with both parameters 0, when the user wants to undo the last run.
inline constexpr UINT kUndoRequest = WM_USER + 4;

// The last page: what was done, and below it what there is to say of single items.
class CFinishDialog : public WizardPageDialog {
 public:
  using WizardPageDialog::WizardPageDialog;

  void ShowOutcome(const std::wstring& text) const;
  void ShowDetails(const FinishDetails& details);

 protected:
  int TemplateNumber() const override;
  std::span<const ControlLook> Looks() const override;
  UnnamedStatics UnnamedStaticsLook() const override { return UnnamedStatics::kTransparent; }
  void FillControls() override;
  bool OnCommand(int control, int notification) override;
  bool OnListKey(int key) override;

 private:
  void FillList() const;
  void CopyLines() const;
  void OpenFolder() const;

  FinishDetails details_;
};

}  // namespace carrovan
