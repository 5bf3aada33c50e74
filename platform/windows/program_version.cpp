#include "platform/windows/program_version.h"

#include <windows.h>

#include <vector>

#include "platform/windows/module_loading.h"

namespace carrovan {

std::wstring ProgramVersion() {
  const std::wstring program = ProgramPath();
  std::vector<unsigned char> block(GetFileVersionInfoSizeW(program.c_str(), nullptr));
  if (block.empty()) return L"";
  const auto size = static_cast<DWORD>(block.size());
  if (GetFileVersionInfoW(program.c_str(), 0, size, block.data()) == FALSE) return L"";
  void* found = nullptr;
  UINT length = 0;
  if (VerQueryValueW(block.data(), L"\\", &found, &length) == FALSE) return L"";
  const auto& version = *static_cast<const VS_FIXEDFILEINFO*>(found);
  return std::to_wstring(HIWORD(version.dwFileVersionMS)) + L"." +
         std::to_wstring(LOWORD(version.dwFileVersionMS)) + L"." +
         std::to_wstring(HIWORD(version.dwFileVersionLS));
}

}  // namespace carrovan
