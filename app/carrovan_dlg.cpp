#include "app/carrovan_dlg.h"

#include <windows.h>

#include <commctrl.h>

#include <array>

#include "app/about_dlg.h"
#include "environment/installed_versions.h"
#include "package/staging_folder.h"
#include "pages/list_dialog.h"
#include "pages/questions.h"
#include "platform/windows/dialog.h"
#include "platform/windows/module_loading.h"
#include "platform/windows/resource_module.h"
#include "resources/resource.h"
#include "text/path_text.h"
#include "wizard/wizard_flow.h"

namespace carrovan {

namespace {

// The system uses the lower four bits of a system command itself.
constexpr UINT kAboutCommand = 0x0010;
constexpr UINT kUndoCommand = 0x0020;
constexpr WPARAM kSystemCommandMask = 0xFFF0;

// The window has come to a screen of another scale; older headers lack the name.
constexpr UINT kScaleChanged = 0x02E0;

// Sent to the window itself once it stands: opens the package that the program was started with.
constexpr UINT kOpenRequest = WM_USER + 5;

// As often as an eye can follow; painting takes the run's own time.
constexpr ULONGLONG kProgressMilliseconds = 50;
constexpr int kProgressEnd = 1000;

}  // namespace

CCarrovanDlg::CCarrovanDlg(const ResourceModule& resources, const Machine& machine,
                           HostFiles& packages, const std::wstring& package)
    : resources_(resources),
      machine_(machine),
      texts_(resources),
      package_(package),
      console_(OpenConsole()),
      log_(*console_),
      flow_({context_, state_, machine, packages, texts_, log_, *this}),
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
  ResumeStep();
}

void CCarrovanDlg::ShowApplicationMessage(const std::wstring& text) {
  ShowApplicationMessageBox(Window(), text);
  ResumeStep();
}

std::optional<std::wstring> CCarrovanDlg::ChooseSaveFile(const SaveFileQuestion& question) {
  auto path = AskForSaveFile(Window(), question);
  ResumeStep();
  return path;
}

bool CCarrovanDlg::AskYesNo(const std::wstring& question) {
  const bool yes = AskInMessageBox(Window(), question);
  ResumeStep();
  return yes;
}

void CCarrovanDlg::SetFinishText(const std::wstring& text) { finish_.ShowOutcome(text); }

bool CCarrovanDlg::AskWithList(const ListQuestion& question) {
  const bool agreed = CListDialog(resources_, question).Ask(Window());
  ResumeStep();
  return agreed;
}

void CCarrovanDlg::SetFinishDetails(const FinishDetails& details) { finish_.ShowDetails(details); }

void CCarrovanDlg::SetBackupText(const std::wstring& text) { reset_.ShowBackup(text); }

void CCarrovanDlg::ShowProgress(int thousandths, const std::wstring& name) {
  const ULONGLONG now = GetTickCount64();
  if (progressShownAt_ != 0 && now - progressShownAt_ < kProgressMilliseconds) return;
  const HWND bar = Control(IDC_PROGRESS_BAR);
  if (progressShownAt_ == 0) {
    SendMessageW(bar, PBM_SETRANGE32, 0, kProgressEnd);
    for (const int control : {IDC_PROGRESS_NAME, IDC_PROGRESS_BAR}) {
      ShowWindow(Control(control), SW_SHOWNA);
    }
  }
  progressShownAt_ = now;
  SetText(IDC_PROGRESS_NAME, name);
  SendMessageW(bar, PBM_SETPOS, static_cast<WPARAM>(thousandths), 0);
  for (const int control : {IDC_PROGRESS_NAME, IDC_PROGRESS_BAR}) UpdateWindow(Control(control));
}

void CCarrovanDlg::HideProgress() {
  progressShownAt_ = 0;
  for (const int control : {IDC_PROGRESS_NAME, IDC_PROGRESS_BAR}) {
    ShowWindow(Control(control), SW_HIDE);
  }
}

void CCarrovanDlg::ShowMode(MigrationMode mode) { start_.ShowMode(mode); }

PathPageView& CCarrovanDlg::PathPage() { return path_; }

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
  FillSystemMenu();
  LoadIcons();
  if (IsProductRunning(*machine_.processes)) {
    ShowMessage(texts_.Text(StringId::kCloseProductFirst));
    CloseWizard();
  }
  SetWindowTextW(Window(), texts_.Text(StringId::kWizardCaption).c_str());
  if (flow_.Open()) {
    fonts_ = WizardFonts(DotsPerInch(Window()));
    CreatePages();
    flow_.Start();
  }
  if (closeRequested_) {
    Close();
  } else {
    DragAcceptFiles(Window(), TRUE);
    if (!package_.empty()) PostMessageW(Window(), kOpenRequest, 0, 0);
  }
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
    case kChangesRequest:
      RunStep([this] { flow_.ShowChanges(); });
      return 0;
    case kUndoRequest:
      RunStep([this] { flow_.UndoLast(); });
      return 0;
    case kOpenRequest:
      RunStep([this] { flow_.OpenPackageFile(package_); });
      return 0;
    case WM_DROPFILES:
      OpenDroppedFile(std::bit_cast<HDROP>(wParam));
      return 0;
    case WM_HELP:
      OpenHelp();
      return TRUE;
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

void CCarrovanDlg::FillSystemMenu() const {
  const HMENU menu = GetSystemMenu(Window(), FALSE);
  if (menu == nullptr) return;
  const std::pair<UINT, StringId> kItems[] = {{kUndoCommand, StringId::kUndoMenu},
                                              {kAboutCommand, StringId::kAboutMenu}};
  for (const auto& [command, text] : kItems) {
    AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
    AppendMenuW(menu, MF_STRING, command, texts_.Text(text).c_str());
  }
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
    waiting_ = &waiting;
    step();
    waiting_ = nullptr;
  }
  ApplyButtons();
  if (closeRequested_) return Close();
  if (shownPage_ == page) {
    RestoreFocus(focus);
  } else {
    FocusPage();
  }
}

void CCarrovanDlg::ResumeStep() const {
  if (waiting_ != nullptr) waiting_->Resume();
}

void CCarrovanDlg::ApplyButtons() const {
  EnableWindow(Control(IDC_BACK), buttons_.backEnabled && !busy_);
  EnableWindow(Control(IDC_NEXT), buttons_.nextEnabled && !busy_);
  EnableWindow(Control(IDC_FINISH), buttons_.finishEnabled && !busy_);
  EnableWindow(Control(IDC_CANCEL), buttons_.cancelEnabled && !busy_);
  ShowWindow(Control(IDC_BACK), buttons_.backVisible ? SW_SHOW : SW_HIDE);
  ShowWindow(Control(IDC_NEXT), buttons_.nextVisible ? SW_SHOW : SW_HIDE);
  if (buttons_.finishLabel) SetText(IDC_FINISH, texts_.Text(*buttons_.finishLabel));
  if (buttons_.cancelLabel) SetText(IDC_CANCEL, texts_.Text(*buttons_.cancelLabel));
  if (!busy_) ApplyDefaultButton();
}

// The Enter key presses Finish, and Next where there is nothing to finish yet.
void CCarrovanDlg::ApplyDefaultButton() const {
  const bool next = !buttons_.finishEnabled && buttons_.nextEnabled && buttons_.nextVisible;
  SendMessageW(Window(), DM_SETDEFID, next ? IDC_NEXT : IDC_FINISH, 0);
}

// A page with nothing to operate leaves the focus to the buttons.
void CCarrovanDlg::FocusPage() const {
  HWND control = shownPage_ == &path_ && path_.IsEmpty()
                     ? path_.Control(IDC_PATH_SELECT)
                     : GetNextDlgTabItem(shownPage_->Window(), nullptr, FALSE);
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
  if ((command & kSystemCommandMask) == kUndoCommand) {
    RunStep([this] { flow_.UndoLast(); });
    return true;
  }
  if ((command & kSystemCommandMask) != kAboutCommand) return false;
  CAboutDlg(resources_).Show(Window());
  return true;
}

void CCarrovanDlg::OpenDroppedFile(HDROP drop) {
  constexpr UINT kFirst = 0;
  std::wstring path(DragQueryFileW(drop, kFirst, nullptr, 0) + 1, L'\0');
  path.resize(DragQueryFileW(drop, kFirst, path.data(), static_cast<UINT>(path.size())));
  DragFinish(drop);
  RunStep([&] { flow_.OpenPackageFile(path); });
}

void CCarrovanDlg::OpenHelp() {
  const std::wstring page =
      WithTrailingBackslash(RemoveFileSpec(ProgramPath())) + L"help\\index.html";
  if (!machine_.files->Exists(page)) {
    return ShowMessage(texts_.Text(StringId::kNoHelp));
  }
  ShellExecuteW(Window(), L"open", page.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
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
