#pragma once

#include <windows.h>

#include <functional>
#include <memory>
#include <vector>

#include "pages/category_pages.h"
#include "pages/end_pages.h"
#include "pages/version_pages.h"
#include "platform/windows/dialog.h"
#include "wizard/wizard_flow.h"
#include "wizard/wizard_frame.h"

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

// While it exists the user waits: the window has been painted and the wait cursor is shown. What
// was typed, clicked or asked to close meanwhile is dropped at the end, since it was meant for what
// the window showed before.
class BusyWindow {
 public:
  explicit BusyWindow(HWND window);
  ~BusyWindow();
  BusyWindow(const BusyWindow&) = delete;
  BusyWindow& operator=(const BusyWindow&) = delete;

  // Shows the wait cursor again after a dialog had its own.
  static void ShowWaitCursor();

 private:
  HWND window_;
  HCURSOR formerCursor_;
};

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
  CategoryTree& Tree(WizardPage categoryPage) override;
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
  PacedRegistryTool registryTool_;
  std::unique_ptr<XmlDom> dom_;
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
  bool busy_ = false;
  bool closeRequested_ = false;
};

}  // namespace carrovan
