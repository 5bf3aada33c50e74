#include "pages/end_pages.h"

#include <windows.h>

#include <shellapi.h>

#include <algorithm>
#include <bit>

#include "resources/resource.h"

namespace carrovan {
namespace {

// Keeps a radio button from being chosen by merely getting the focus; older headers lack the name.
constexpr UINT kSetDoNotClick = 0x00F8;

constexpr ControlLook kStartLooks[] = {
    {IDC_START_HEADING, PageFont::kTitle, ControlBackground::kTransparent},
    {IDC_START_INTRODUCTION, PageFont::kText, ControlBackground::kTransparent},
    {IDC_START_EXPORT_TEXT, PageFont::kText, ControlBackground::kTransparent},
    {IDC_START_IMPORT_TEXT, PageFont::kText, ControlBackground::kTransparent},
    {IDC_START_RESET_TEXT, PageFont::kText, ControlBackground::kTransparent},
    {IDC_START_EXPORT, PageFont::kHeading, ControlBackground::kUsual},
    {IDC_START_IMPORT, PageFont::kHeading, ControlBackground::kUsual},
    {IDC_START_RESET, PageFont::kHeading, ControlBackground::kUsual},
};

MigrationMode ModeOf(int control) {
  switch (control) {
    case IDC_START_EXPORT:
      return MigrationMode::kExport;
    case IDC_START_IMPORT:
      return MigrationMode::kImport;
    case IDC_START_RESET:
      return MigrationMode::kReset;
    default:
      return MigrationMode::kNone;
  }
}

}  // namespace

int CStartDialog::TemplateNumber() const { return IDD_START; }

std::span<const ControlLook> CStartDialog::Looks() const { return kStartLooks; }

void CStartDialog::FillControls() {
  SetText(IDC_START_HEADING, StringId::kWelcome);
  SetText(IDC_START_INTRODUCTION, StringId::kIntroduction);
  SetText(IDC_START_EXPORT, StringId::kExportChoice);
  SetText(IDC_START_IMPORT, StringId::kImportChoice);
  SetText(IDC_START_RESET, StringId::kResetChoice);
  SetText(IDC_START_EXPORT_TEXT, StringId::kExportExplanation);
  SetText(IDC_START_IMPORT_TEXT, StringId::kImportExplanation);
  SetText(IDC_START_RESET_TEXT, StringId::kResetExplanation);
  for (const int radio : {IDC_START_EXPORT, IDC_START_IMPORT, IDC_START_RESET}) {
    SendMessageW(Control(radio), kSetDoNotClick, TRUE, 0);
  }
}

void CStartDialog::ShowMode(MigrationMode mode) const {
  for (const int radio : {IDC_START_EXPORT, IDC_START_IMPORT, IDC_START_RESET}) {
    CheckDlgButton(Window(), radio, ModeOf(radio) == mode ? BST_CHECKED : BST_UNCHECKED);
  }
}

bool CStartDialog::OnCommand(int control, int notification) {
  const MigrationMode mode = ModeOf(control);
  if (mode == MigrationMode::kNone || notification != BN_CLICKED) return false;
  ChooseMode(state_, context_, mode);
  return true;
}

namespace {

// Pixels that a list keeps free beside its text.
constexpr LONG kListMargin = 8;

constexpr ControlLook kFinishLooks[] = {
    {IDC_FINISH_TITLE, PageFont::kTitle, ControlBackground::kTransparent},
    {IDC_FINISH_MESSAGE, PageFont::kText, ControlBackground::kTransparent},
    {IDC_FINISH_LIST, PageFont::kText, ControlBackground::kUsual},
    {IDC_FINISH_OPEN_FOLDER, PageFont::kText, ControlBackground::kUsual},
    {IDC_FINISH_UNDO, PageFont::kText, ControlBackground::kUsual},
};

}  // namespace

void CFinishDialog::ShowOutcome(const std::wstring& text) const {
  SetText(IDC_FINISH_MESSAGE, text);
  InvalidateRect(Window(), nullptr, TRUE);
}

int CFinishDialog::TemplateNumber() const { return IDD_FINISH; }

std::span<const ControlLook> CFinishDialog::Looks() const { return kFinishLooks; }

void CFinishDialog::FillControls() {
  SetText(IDC_FINISH_TITLE, StringId::kOperationCompleted);
  SetText(IDC_FINISH_OPEN_FOLDER, StringId::kOpenFolder);
  SetText(IDC_FINISH_UNDO, StringId::kUndoButton);
}

void CFinishDialog::ShowDetails(const FinishDetails& details) {
  details_ = details;
  FillList();
  const auto show = [this](int control, bool visible) {
    ShowWindow(Control(control), visible ? SW_SHOWNA : SW_HIDE);
  };
  show(IDC_FINISH_LIST, !details_.lines.empty());
  show(IDC_FINISH_OPEN_FOLDER, !details_.packagePath.empty());
  show(IDC_FINISH_UNDO, details_.canUndo);
}

void CFinishDialog::FillList() const {
  const HWND list = Control(IDC_FINISH_LIST);
  SendMessageW(list, WM_SETREDRAW, FALSE, 0);
  SendMessageW(list, LB_RESETCONTENT, 0, 0);
  const DeviceContext context(list);
  const SelectedObject font(context.Get(),
                            std::bit_cast<HFONT>(SendMessageW(list, WM_GETFONT, 0, 0)));
  LONG widest = 0;
  for (const std::wstring& line : details_.lines) {
    SendMessageW(list, LB_ADDSTRING, 0, std::bit_cast<LPARAM>(line.c_str()));
    SIZE size{};
    GetTextExtentPoint32W(context.Get(), line.c_str(), static_cast<int>(line.size()), &size);
    widest = std::max(widest, size.cx);
  }
  SendMessageW(list, LB_SETHORIZONTALEXTENT, static_cast<WPARAM>(widest + kListMargin), 0);
  SendMessageW(list, WM_SETREDRAW, TRUE, 0);
}

bool CFinishDialog::OnCommand(int control, int notification) {
  if (notification != BN_CLICKED) return false;
  if (control == IDC_FINISH_UNDO) {
    SendMessageW(GetParent(Window()), kUndoRequest, 0, 0);
    return true;
  }
  if (control != IDC_FINISH_OPEN_FOLDER) return false;
  OpenFolder();
  return true;
}

bool CFinishDialog::OnListKey(int key) {
  const bool withControl = GetKeyState(VK_CONTROL) < 0;
  if (!withControl || (key != 'C' && key != 'A')) return false;
  if (key == 'C') {
    CopyLines();
  } else {
    SendMessageW(Control(IDC_FINISH_LIST), LB_SETSEL, TRUE, -1);
  }
  return true;
}

// The selected lines, or all when at most the one with the caret is.
void CFinishDialog::CopyLines() const {
  const HWND list = Control(IDC_FINISH_LIST);
  const bool all = SendMessageW(list, LB_GETSELCOUNT, 0, 0) <= 1;
  std::wstring text;
  for (std::size_t i = 0; i < details_.lines.size(); ++i) {
    if (all || SendMessageW(list, LB_GETSEL, i, 0) > 0) text += details_.lines[i] + L"\r\n";
  }
  CopyText(Window(), text);
}

void CFinishDialog::OpenFolder() const {
  const std::wstring selection = L"/select,\"" + details_.packagePath + L"\"";
  ShellExecuteW(Window(), nullptr, L"explorer.exe", selection.c_str(), nullptr, SW_SHOWNORMAL);
}

}  // namespace carrovan
