#pragma once

#include <functional>
#include <vector>

#include "app/wizard_runs.h"
#include "environment/wizard_flow.h"
#include "pages/export_dialog.h"
#include "pages/finish_dialog.h"
#include "pages/import_dialog.h"
#include "pages/reset_dialog.h"
#include "pages/select_path.h"
#include "pages/select_version.h"
#include "pages/start_dialog.h"
#include "platform/wizard_frame.h"

namespace carrovan {

// The wizard's window: the pages, of which one is shown, above the row of buttons. It owns all that
// the wizard knows and works with.
class CCarrovanDlg : public Dialog, public WizardFrame {
 public:
  // Everything outlives the dialog.
  CCarrovanDlg(const ResourceModule& resources, const Machine& machine);

  // Returns when the user has closed the wizard.
  void Run();

  void ShowMessage(const std::wstring& text) override;
  void ShowApplicationMessage(const std::wstring& text) override;
  std::optional<std::wstring> ChooseSaveFile(const SaveFileQuestion& question) override;
  void SetFinishText(const std::wstring& text) override;
  void CloseWizard() override;
  void ShowPage(WizardPage page) override;
  void ShowButtons(const WizardButtons& buttons) override;
  bool AskYesNo(const std::wstring& question) override;
  std::optional<std::wstring> SelectedVersion(WizardPage page) const override;
  EditableCategoryTree& Tree(WizardPage categoryPage) override;
  void EndProgram() override;

 protected:
  bool OnInitDialog() override;
  bool OnCommand(int control, int notification) override;
  std::optional<LRESULT> OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

 private:
  void AddAboutToSystemMenu() const;
  void LoadIcons();
  void CreatePages();
  WizardPageDialog& PageDialog(WizardPage page);

  void RunStep(const std::function<void()>& step);
  void ApplyButtons() const;
  void FocusPage() const;
  void RestoreFocus(HWND former) const;
  void Close();

  bool PaintMinimized() const;
  bool HandleSystemCommand(WPARAM command);
  void TakeScale(int dotsPerInch);

  const ResourceModule& resources_;
  const Machine machine_;
  ProductContext context_;
  WizardState state_;
  RegistryTool registryTool_;
  WizardRuns runs_;
  WizardFlow flow_;
  WizardFonts fonts_;
  IconHandle bigIcon_;
  IconHandle smallIcon_;

  CStartDialog start_;
  CSelectVersion version_;
  CDialogExport1 export_;
  CFinishDialog finish_;
  CSelectPath path_;
  CDialogImport import_;
  CDialogReset reset_;
  WizardPageDialog* shownPage_ = nullptr;

  WizardButtons buttons_;
  bool busy_ = false;
  bool closeRequested_ = false;
};

}  // namespace carrovan
