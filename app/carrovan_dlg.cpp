#include "app/carrovan_dlg.h"

#include <array>

#include "environment/installed_versions.h"
#include "package/staging_folder.h"
#include "pages/questions.h"
#include "platform/windows/dialog.h"
#include "platform/windows/resource_module.h"
#include "resources/resource.h"
#include "wizard/wizard_flow.h"

namespace carrovan {

void CAboutDlg::Show(HWND owner) { RunModal(resources_, IDD_ABOUT, owner); }

bool CAboutDlg::OnInitDialog() {
  icon_ = resources_.Icon(IDI_CARROVAN, ScaledPixels(Window(), 48));
  SendMessageW(Control(IDC_ABOUT_ICON), STM_SETICON, reinterpret_cast<WPARAM>(icon_.Get()), 0);
  SetText(IDC_ABOUT_VERSION, L"Carrovan " + ProgramVersion());
  return true;
}

bool CAboutDlg::OnCommand(int control, int) {
  if (control != IDOK && control != IDCANCEL) return false;
  EndDialog(Window(), IDOK);
  return true;
}

namespace {

void DropMessages(HWND window, UINT first, UINT last) {
  MSG message{};
  while (PeekMessageW(&message, window, first, last, PM_REMOVE) != FALSE) {
    if (message.message == WM_QUIT) {
      // The filter does not hold this one back; it is for the loop outside.
      PostQuitMessage(static_cast<int>(message.wParam));
      return;
    }
  }
}

}  // namespace

BusyWindow::BusyWindow(HWND window) : window_(window) {
  RedrawWindow(window_, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
  formerCursor_ = SetCursor(LoadCursorW(nullptr, IDC_WAIT));
}

BusyWindow::~BusyWindow() {
  DropMessages(nullptr, WM_NCMOUSEMOVE, WM_NCXBUTTONDBLCLK);
  DropMessages(nullptr, WM_KEYFIRST, WM_KEYLAST);
  DropMessages(nullptr, WM_MOUSEFIRST, WM_MOUSELAST);
  DropMessages(window_, WM_SYSCOMMAND, WM_SYSCOMMAND);
  DropMessages(window_, WM_CLOSE, WM_CLOSE);
  SetCursor(formerCursor_);
}

void BusyWindow::ShowWaitCursor() { SetCursor(LoadCursorW(nullptr, IDC_WAIT)); }

namespace {

// The system uses the lower four bits of a system command itself.
constexpr UINT kAboutCommand = 0x0010;
constexpr WPARAM kSystemCommandMask = 0xFFF0;

// The window has come to a screen of another scale; older headers lack the name.
constexpr UINT kScaleChanged = 0x02E0;

}  // namespace

CCarrovanDlg::CCarrovanDlg(const ResourceModule& resources, const Machine& machine)
    : resources_(resources),
      machine_(machine),
      registryTool_(*machine.registryTool, *machine.clock, RegistryToolPace::kFixedPause),
      dom_(OpenXmlDom(*machine.files)),
      console_(OpenConsole()),
      log_(*console_),
      flow_({context_, state_, machine, registryTool_, *dom_, log_, *this}),
      fonts_(USER_DEFAULT_SCREEN_DPI),
      start_({resources, fonts_}, state_, context_),
      version_({resources, fonts_}, context_),
      export_({resources, fonts_}),
      finish_({resources, fonts_}),
      path_({resources, fonts_}, state_, context_,
            [this](PathPageView& page) { RunStep([&] { flow_.SelectFile(page); }); }),
      import_({resources, fonts_}),
      reset_({resources, fonts_}) {}

void CCarrovanDlg::Run() {
  RunModal(resources_, IDD_WIZARD, nullptr);
  DeleteStagingFolder(context_, machine_);
}

void CCarrovanDlg::ShowMessage(const std::wstring& text) {
  ShowPlainMessageBox(Window(), text);
  if (busy_) BusyWindow::ShowWaitCursor();
}

void CCarrovanDlg::ShowApplicationMessage(const std::wstring& text) {
  ShowApplicationMessageBox(Window(), text);
  if (busy_) BusyWindow::ShowWaitCursor();
}

std::optional<std::wstring> CCarrovanDlg::ChooseSaveFile(const SaveFileQuestion& question) {
  auto path = AskForSaveFile(Window(), question);
  if (busy_) BusyWindow::ShowWaitCursor();
  return path;
}

bool CCarrovanDlg::AskYesNo(const std::wstring& question) {
  const bool yes = AskInMessageBox(Window(), question);
  if (busy_) BusyWindow::ShowWaitCursor();
  return yes;
}

void CCarrovanDlg::SetFinishText(const std::wstring& text) { finish_.ShowOutcome(text); }

void CCarrovanDlg::CloseWizard() { closeRequested_ = true; }

void CCarrovanDlg::ShowPage(WizardPage page) {
  WizardPageDialog& next = PageDialog(page);
  if (shownPage_ != nullptr && shownPage_ != &next) ShowWindow(shownPage_->Window(), SW_HIDE);
  shownPage_ = &next;
  ShowWindow(next.Window(), SW_SHOW);
  FocusPage();
}

void CCarrovanDlg::ShowButtons(const WizardButtons& buttons) {
  buttons_ = buttons;
  ApplyButtons();
}

std::optional<std::wstring> CCarrovanDlg::SelectedVersion(WizardPage page) const {
  return page == WizardPage::kVersion ? version_.SelectedVersion() : path_.SelectedVersion();
}

CategoryTree& CCarrovanDlg::Tree(WizardPage categoryPage) {
  switch (categoryPage) {
    case WizardPage::kImportCategories:
      return import_.Tree();
    case WizardPage::kResetCategories:
      return reset_.Tree();
    default:
      return export_.Tree();
  }
}

void CCarrovanDlg::EndProgram() {
  DestroyWindow(Window());
  DeleteStagingFolder(context_, machine_);
  ExitProcess(0);
}

bool CCarrovanDlg::OnInitDialog() {
  AddAboutToSystemMenu();
  LoadIcons();
  if (IsProductRunning(*machine_.processes)) {
    ShowMessage(resources_.Text(static_cast<int>(StringId::kCloseProductFirst)));
    CloseWizard();
  }
  SetWindowTextW(Window(), resources_.Text(static_cast<int>(StringId::kWizardCaption)).c_str());
  if (flow_.Open()) {
    fonts_ = WizardFonts(DotsPerInch(Window()));
    CreatePages();
    flow_.Start();
  }
  if (closeRequested_) Close();
  // The page that is shown has the focus.
  return false;
}

bool CCarrovanDlg::OnCommand(int control, int notification) {
  if (notification != BN_CLICKED) return false;
  switch (control) {
    case IDC_FINISH:
      RunStep([this] { flow_.Finish(); });
      return true;
    case IDC_BACK:
      RunStep([this] { flow_.Back(); });
      return true;
    case IDC_NEXT:
      RunStep([this] { flow_.Next(); });
      return true;
    case IDC_CANCEL:
    case IDCANCEL:
      if (!busy_) Close();
      return true;
    default:
      return false;
  }
}

std::optional<LRESULT> CCarrovanDlg::OnMessage(UINT message, WPARAM wParam, LPARAM) {
  switch (message) {
    case kBackupRequest:
      RunStep([this] { flow_.OneClickBackup(); });
      return 0;
    case WM_SYSCOMMAND:
      return HandleSystemCommand(wParam) ? std::optional<LRESULT>(0) : std::nullopt;
    case WM_PAINT:
      return PaintMinimized() ? std::optional<LRESULT>(0) : std::nullopt;
    case kScaleChanged:
      TakeScale(LOWORD(wParam));
      return std::nullopt;
    default:
      return std::nullopt;
  }
}

void CCarrovanDlg::AddAboutToSystemMenu() const {
  const std::wstring text = resources_.Text(static_cast<int>(StringId::kAboutMenu));
  const HMENU menu = GetSystemMenu(Window(), FALSE);
  if (menu == nullptr || text.empty()) return;
  AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
  AppendMenuW(menu, MF_STRING, kAboutCommand, text.c_str());
}

void CCarrovanDlg::LoadIcons() {
  bigIcon_ = resources_.Icon(IDI_CARROVAN, GetSystemMetrics(SM_CXICON));
  smallIcon_ = resources_.Icon(IDI_CARROVAN, GetSystemMetrics(SM_CXSMICON));
  SendMessageW(Window(), WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(bigIcon_.Get()));
  SendMessageW(Window(), WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(smallIcon_.Get()));
}

void CCarrovanDlg::CreatePages() {
  const std::array<WizardPageDialog*, 7> pages{&start_, &version_, &export_, &finish_,
                                               &path_,  &import_,  &reset_};
  for (WizardPageDialog* page : pages) {
    if (!page->CreateIn(Window())) continue;
    // In front of the buttons, so that the Tab key comes to the page first.
    SetWindowPos(page->Window(), HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
  }
}

WizardPageDialog& CCarrovanDlg::PageDialog(WizardPage page) {
  switch (page) {
    case WizardPage::kStart:
      return start_;
    case WizardPage::kVersion:
      return version_;
    case WizardPage::kExportCategories:
      return export_;
    case WizardPage::kPath:
      return path_;
    case WizardPage::kImportCategories:
      return import_;
    case WizardPage::kResetCategories:
      return reset_;
    case WizardPage::kFinish:
      return finish_;
  }
  return start_;
}

void CCarrovanDlg::RunStep(const std::function<void()>& step) {
  if (busy_) return;
  const HWND focus = GetFocus();
  const WizardPageDialog* page = shownPage_;
  {
    const RaisedFlag busy(busy_);
    ApplyButtons();
    const BusyWindow waiting(Window());
    step();
  }
  ApplyButtons();
  if (closeRequested_) return Close();
  if (shownPage_ == page) {
    RestoreFocus(focus);
  } else {
    FocusPage();
  }
}

void CCarrovanDlg::ApplyButtons() const {
  EnableWindow(Control(IDC_BACK), buttons_.backEnabled && !busy_);
  EnableWindow(Control(IDC_NEXT), buttons_.nextEnabled && !busy_);
  EnableWindow(Control(IDC_FINISH), buttons_.finishEnabled && !busy_);
  EnableWindow(Control(IDC_CANCEL), buttons_.cancelEnabled && !busy_);
  ShowWindow(Control(IDC_BACK), buttons_.backVisible ? SW_SHOW : SW_HIDE);
  ShowWindow(Control(IDC_NEXT), buttons_.nextVisible ? SW_SHOW : SW_HIDE);
  if (buttons_.finishLabel) SetText(IDC_FINISH, *buttons_.finishLabel);
  if (buttons_.cancelLabel) SetText(IDC_CANCEL, *buttons_.cancelLabel);
}

// A page with nothing to operate leaves the focus to the buttons.
void CCarrovanDlg::FocusPage() const {
  HWND control = GetNextDlgTabItem(shownPage_->Window(), nullptr, FALSE);
  for (const int button : {IDC_FINISH, IDC_NEXT, IDC_CANCEL}) {
    if (control != nullptr) break;
    if (IsWindowEnabled(Control(button)) != FALSE) control = Control(button);
  }
  if (control == nullptr) return;
  SendMessageW(Window(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control), TRUE);
}

void CCarrovanDlg::RestoreFocus(HWND former) const {
  if (former == nullptr || IsChild(Window(), former) == FALSE) return;
  if (IsWindowEnabled(former) == FALSE || IsWindowVisible(former) == FALSE) return FocusPage();
  SendMessageW(Window(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(former), TRUE);
}

void CCarrovanDlg::Close() { EndDialog(Window(), IDOK); }

bool CCarrovanDlg::PaintMinimized() const {
  if (IsIconic(Window()) == FALSE) return false;
  const PaintContext paint(Window());
  SendMessageW(Window(), WM_ICONERASEBKGND, reinterpret_cast<WPARAM>(paint.Get()), 0);
  RECT client{};
  GetClientRect(Window(), &client);
  const int x = (client.right - GetSystemMetrics(SM_CXICON) + 1) / 2;
  const int y = (client.bottom - GetSystemMetrics(SM_CYICON) + 1) / 2;
  DrawIcon(paint.Get(), x, y, bigIcon_.Get());
  return true;
}

bool CCarrovanDlg::HandleSystemCommand(WPARAM command) {
  if ((command & kSystemCommandMask) == SC_CLOSE) return busy_;
  if ((command & kSystemCommandMask) != kAboutCommand) return false;
  CAboutDlg(resources_).Show(Window());
  return true;
}

void CCarrovanDlg::TakeScale(int dotsPerInch) {
  // The controls keep a font until they have the next one.
  const WizardFonts former = std::exchange(fonts_, WizardFonts(dotsPerInch));
  for (const WizardPageDialog* page : std::initializer_list<const WizardPageDialog*>{
           &start_, &version_, &export_, &finish_, &path_, &import_, &reset_}) {
    page->ApplyFonts();
  }
}

}  // namespace carrovan
