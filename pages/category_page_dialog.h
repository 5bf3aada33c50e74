#pragma once

#include "pages/wizard_page_dialog.h"
#include "platform/windows/tree_view.h"

namespace carrovan {

// A page with the tree of categories and, beside it, what the clicked one holds.
class CategoryPageDialog : public WizardPageDialog {
 public:
  using WizardPageDialog::WizardPageDialog;

  TreeView& Tree() { return tree_; }

 protected:
  struct Texts {
    StringId title;
    StringId question;
    StringId leadIn;
  };
  virtual Texts PageTexts() const = 0;

  std::span<const ControlLook> Looks() const override;
  UnnamedStatics UnnamedStaticsLook() const override { return UnnamedStatics::kTransparent; }
  void FillControls() override;
  bool OnNotify(const NMHDR& header) override;

 private:
  void HandleClick();
  void ShowDescription(const std::wstring& text) const;

  TreeView tree_;
};

}  // namespace carrovan
