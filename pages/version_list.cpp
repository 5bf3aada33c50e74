#include "pages/version_list.h"

namespace carrovan {

void FillVersionList(HWND list, const std::vector<std::wstring>& years) {
  SendMessageW(list, CB_RESETCONTENT, 0, 0);
  for (const std::wstring& year : years) {
    SendMessageW(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(year.c_str()));
  }
  SendMessageW(list, CB_SETCURSEL, years.size() - 1, 0);
}

std::optional<std::wstring> SelectedYear(HWND list) {
  const LRESULT selected = SendMessageW(list, CB_GETCURSEL, 0, 0);
  if (selected == CB_ERR) return std::nullopt;
  const auto entry = static_cast<WPARAM>(selected);
  const LRESULT length = SendMessageW(list, CB_GETLBTEXTLEN, entry, 0);
  if (length == CB_ERR) return std::nullopt;
  std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
  SendMessageW(list, CB_GETLBTEXT, entry, reinterpret_cast<LPARAM>(text.data()));
  text.resize(static_cast<std::size_t>(length));
  return text;
}

}  // namespace carrovan
