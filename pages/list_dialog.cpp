#include "pages/list_dialog.h"

#include <windows.h>

#include <commctrl.h>

#include <bit>
#include <vector>

#include "resources/resource.h"

namespace carrovan {
namespace {

// More lines than this are shown by their headings, which the user opens.
constexpr std::size_t kShownAtOnce = 60;

HTREEITEM AddLine(HWND tree, HTREEITEM parent, const std::wstring& text) {
  std::wstring label = text;
  TVINSERTSTRUCTW insertion{};
  insertion.hParent = parent;
  insertion.hInsertAfter = TVI_LAST;
  insertion.item.mask = TVIF_TEXT;
  insertion.item.pszText = label.data();
  return std::bit_cast<HTREEITEM>(
      SendMessageW(tree, TVM_INSERTITEMW, 0, std::bit_cast<LPARAM>(&insertion)));
}

}  // namespace

bool CListDialog::Ask(HWND owner) {
  RunModal(resources_, IDD_LIST, owner);
  return agreed_;
}

bool CListDialog::OnInitDialog() {
  SetText(IDC_LIST_TEXT, question_.text);
  FillLines();
  ShowButton(IDC_LIST_SAVE, StringId::kSaveList, static_cast<bool>(question_.save));
  ShowButton(IDC_LIST_YES, question_.yes.value_or(StringId::kYes), question_.yes.has_value());
  ShowButton(IDCANCEL, question_.no, true);
  SetFocus(Control(IDCANCEL));
  return false;
}

void CListDialog::ShowButton(int control, StringId text, bool visible) const {
  SetText(control, texts_.Text(text));
  ShowWindow(Control(control), visible ? SW_SHOW : SW_HIDE);
  EnableWindow(Control(control), visible ? TRUE : FALSE);
}

void CListDialog::FillLines() const {
  const HWND tree = Control(IDC_LIST_LINES);
  SendMessageW(tree, WM_SETREDRAW, FALSE, 0);
  // The item that stands above the next one, for each level.
  std::vector<HTREEITEM> above{TVI_ROOT};
  for (const ListedLine& line : question_.lines) {
    above.resize(static_cast<std::size_t>(line.level) + 1, above.back());
    above.push_back(AddLine(tree, above.back(), line.text));
  }
  if (question_.lines.size() <= kShownAtOnce) {
    for (HTREEITEM item = TreeView_GetRoot(tree); item != nullptr;
         item = TreeView_GetNextSibling(tree, item)) {
      TreeView_Expand(tree, item, TVE_EXPAND);
    }
  }
  TreeView_EnsureVisible(tree, TreeView_GetRoot(tree));
  SendMessageW(tree, WM_SETREDRAW, TRUE, 0);
}

bool CListDialog::OnCommand(int control, int) {
  switch (control) {
    case IDC_LIST_SAVE:
      if (question_.save) question_.save();
      return true;
    case IDC_LIST_YES:
      agreed_ = true;
      EndDialog(Window(), IDOK);
      return true;
    case IDCANCEL:
      EndDialog(Window(), IDCANCEL);
      return true;
    default:
      return false;
  }
}

bool CListDialog::OnNotify(const NMHDR& header) {
  if (header.idFrom != IDC_LIST_LINES || header.code != TVN_KEYDOWN) return false;
  const auto& pressed = *std::bit_cast<const NMTVKEYDOWN*>(&header);
  if (pressed.wVKey != 'C' || GetKeyState(VK_CONTROL) >= 0) return false;
  CopyLines();
  return true;
}

void CListDialog::CopyLines() const {
  std::wstring text;
  for (const ListedLine& line : question_.lines) {
    text += std::wstring(static_cast<std::size_t>(line.level), L'\t') + line.text + L"\r\n";
  }
  CopyText(Window(), text);
}

}  // namespace carrovan
