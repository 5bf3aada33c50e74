// Prints the text on the clipboard as UTF-8, for the tests that copy something in the wizard.

#include <windows.h>

#include <iostream>
#include <string>

#include "text/text.h"

int wmain() {
  if (OpenClipboard(nullptr) == FALSE) return 1;
  const HANDLE memory = GetClipboardData(CF_UNICODETEXT);
  if (const auto* text =
          static_cast<const wchar_t*>(memory == nullptr ? nullptr : GlobalLock(memory))) {
    std::string bytes = carrovan::ToUtf8(text);
    std::erase(bytes, '\r');  // the stream adds its own
    std::cout << bytes;
    GlobalUnlock(memory);
  }
  CloseClipboard();
  return std::cout.flush() ? 0 : 1;
}
