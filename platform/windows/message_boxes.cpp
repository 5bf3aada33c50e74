#include "platform/windows/message_boxes.h"

namespace carrovan {

void ShowPlainMessageBox(HWND owner, const std::wstring& text) {
  MessageBoxW(owner, text.c_str(), L"", MB_OK);
}

void ShowApplicationMessageBox(HWND owner, const std::wstring& text) {
  MessageBoxW(owner, text.c_str(), L"Carrovan", MB_OK | MB_ICONWARNING);
}

bool AskInMessageBox(HWND owner, const std::wstring& question) {
  return MessageBoxW(owner, question.c_str(), L"Carrovan", MB_YESNO | MB_ICONQUESTION) == IDYES;
}

}  // namespace carrovan
