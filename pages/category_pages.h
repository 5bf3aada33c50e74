#pragma once

#include "pages/tree_view.h"
#include "pages/wizard_page_dialog.h"

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
  bool IsOnCheckBox() const;
  void ShowDescription(const std::wstring& text) const;

  TreeView tree_;
};

class CDialogExport1 : public CategoryPageDialog {
 public:
  using CategoryPageDialog::CategoryPageDialog;

 protected:
  int TemplateNumber() const override;
  Texts PageTexts() const override;
};

// Sent to the frame, with both parameters 0, when the user wants to see what the ticked categories
// would change.
inline constexpr UINT kChangesRequest = WM_USER + 3;

class CDialogImport : public CategoryPageDialog {
 public:
  using CategoryPageDialog::CategoryPageDialog;

 protected:
  int TemplateNumber() const override;
  Texts PageTexts() const override;
  void FillControls() override;
  bool OnCommand(int control, int notification) override;
};

// Sent to the frame, with both parameters 0, when the user wants a backup before the reset.
inline constexpr UINT kBackupRequest = WM_USER + 2;

class CDialogReset : public CategoryPageDialog {
 public:
  using CategoryPageDialog::CategoryPageDialog;

  // The line beside the backup button.
  void ShowBackup(const std::wstring& text) const;

 protected:
  int TemplateNumber() const override;
  Texts PageTexts() const override;
  void FillControls() override;
  bool OnCommand(int control, int notification) override;
};

}  // namespace carrovan
