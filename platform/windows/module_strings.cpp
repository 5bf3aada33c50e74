#include "platform/windows/module_strings.h"

#include <windows.h>

namespace carrovan {

std::wstring LoadModuleString(unsigned number) {
  // With no buffer the system hands out the text where it lies in the program.
  const wchar_t* text = nullptr;
  const int length =
      LoadStringW(GetModuleHandleW(nullptr), number, reinterpret_cast<wchar_t*>(&text), 0);
  return length > 0 ? std::wstring(text, static_cast<std::size_t>(length)) : std::wstring();
}

}  // namespace carrovan
