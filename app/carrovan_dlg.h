#pragma once

#include <windows.h>

#include <shellapi.h>

#include <functional>
#include <memory>
#include <vector>

#include "app/busy_window.h"
#include "pages/category_pages.h"
#include "pages/end_pages.h"
#include "pages/resource_texts.h"
#include "pages/version_pages.h"
#include "platform/windows/dialog.h"
#include "wizard/wizard_flow.h"
#include "wizard/wizard_frame.h"

namespace carrovan {

// The log of merges goes to standard output, for those who start the wizard with one.
class StandardLog : public LineLog {
 public:
  explicit StandardLog(Console& console) : console_(console) {}

  void WriteLine(std::wstring_view line) override { console_.Out(std::wstring(line) + L"\n"); }

 private:
  Console& console_;
};

// The wizard's window: the pages, of which one is shown, above the row of buttons. It owns all that
// the wizard knows and works with.
class CCarrovanDlg : public Dialog, public WizardFrame {
 public:
  // Everything outlives the dialog. `package` is one to open the wizard with, or empty.
  CCarrovanDlg(const ResourceModule& resources, const Machine& machine, HostFiles& packages,
               const std::wstring& package);

  // Returns when the user has closed the wizard.
  void Run();

  void ShowMessage(const std::wstring& text) override;
  void ShowApplicationMessage(const std::wstring& text) override;
  std::optional<std::wstring> ChooseSaveFile(const SaveFileQuestion& question) override;
  bool AskWithList(const ListQuestion& question) override;
  void SetFinishText(const std::wstring& text) override;
  void SetFinishDetails(const FinishDetails& details) override;
  void SetBackupText(const std::wstring& text) override;
  void ShowProgress(int thousandths, const std::wstring& name) override;
  void HideProgress() override;
  void ShowMode(MigrationMode mode) override;
  PathPageView& PathPage() override;
  void CloseWizard() override;
  void ShowPage(WizardPage page) override;
  void ShowButtons(const WizardButtons& buttons) override;
  bool AskYesNo(const std::wstring& question) override;
  std::optional<std::wstring> SelectedVersion(WizardPage page) const override;
  CategoryTree& Tree(WizardPage categoryPage) override;
  void EndProgram() override;

 protected:
  bool OnInitDialog() override;
  bool OnCommand(int control, int notification) override;
  std::optional<LRESULT> OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

 private:
  void FillSystemMenu() const;
  void LoadIcons();
  void CreatePages();
  WizardPageDialog& PageDialog(WizardPage page);

  void RunStep(const std::function<void()>& step);
  void ResumeStep() const;
  void ApplyButtons() const;
  void ApplyDefaultButton() const;
  void FocusPage() const;
  void RestoreFocus(HWND former) const;
  void Close();

  bool PaintMinimized() const;
  bool HandleSystemCommand(WPARAM command);
  void OpenDroppedFile(HDROP drop);
  void OpenHelp();
  void TakeScale(int dotsPerInch);

  const ResourceModule& resources_;
  const Machine machine_;
  ProductContext context_;
  WizardState state_;
  const ResourceTexts texts_;
  const std::wstring package_;
  std::unique_ptr<Console> console_;
  StandardLog log_;
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
  const BusyWindow* waiting_ = nullptr;  // while a step runs
  ULONGLONG progressShownAt_ = 0;        // milliseconds; 0 while there is no progress
  bool busy_ = false;
  bool closeRequested_ = false;
};

}  // namespace carrovan
