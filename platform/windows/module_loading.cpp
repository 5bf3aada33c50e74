#include "platform/windows/module_loading.h"

#include <windows.h>

#include "text/path_text.h"

namespace carrovan {

std::wstring ProgramPath() {
  std::wstring path(kFixedPathBuffer, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (length < path.size()) return path.substr(0, length);
    path.resize(path.size() * 2);
  }
}

SystemCode LoadModule(const std::wstring& path, ModuleHandle& module) {
  // A damaged library the system would report to the user itself, in a message box.
  DWORD oldMode = 0;
  SetThreadErrorMode(SEM_FAILCRITICALERRORS, &oldMode);
  module.Reset(LoadLibraryExW(path.c_str(), nullptr,
                              LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32));
  const SystemCode code = module ? kSystemOk : GetLastError();
  SetThreadErrorMode(oldMode, nullptr);
  return code;
}

std::wstring LoadModuleString(unsigned number) {
  // With no buffer the system hands out the text where it lies in the program.
  const wchar_t* text = nullptr;
  const int length =
      LoadStringW(GetModuleHandleW(nullptr), number, reinterpret_cast<wchar_t*>(&text), 0);
  return length > 0 ? std::wstring(text, static_cast<std::size_t>(length)) : std::wstring();
}

}  // namespace carrovan
