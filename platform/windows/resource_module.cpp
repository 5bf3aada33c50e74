#include "platform/windows/resource_module.h"

#include <windows.h>

#include <vector>

#include "platform/windows/module_loading.h"

namespace carrovan {

std::wstring ResourceModule::Text(int number) const {
  const auto id = static_cast<UINT>(number);
  if (library_) {
    // With no buffer the system hands out the text where it lies in the library.
    const wchar_t* text = nullptr;
    const int length = LoadStringW(library_.Get(), id, reinterpret_cast<wchar_t*>(&text), 0);
    if (length > 0) return {text, static_cast<std::size_t>(length)};
  }
  return LoadModuleString(id);
}

HMODULE ResourceModule::DialogOwner(int number) const { return Owner(RT_DIALOG, number); }

BitmapHandle ResourceModule::Bitmap(int number) const {
  return BitmapHandle(
      static_cast<HBITMAP>(LoadImageW(Owner(RT_BITMAP, number), MAKEINTRESOURCEW(number),
                                      IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION)));
}

IconHandle ResourceModule::Icon(int number, int pixels) const {
  return IconHandle(
      static_cast<HICON>(LoadImageW(Owner(RT_GROUP_ICON, number), MAKEINTRESOURCEW(number),
                                    IMAGE_ICON, pixels, pixels, LR_DEFAULTCOLOR)));
}

HMODULE ResourceModule::Owner(const wchar_t* type, int number) const {
  const bool inLibrary =
      library_ && FindResourceW(library_.Get(), MAKEINTRESOURCEW(number), type) != nullptr;
  return inLibrary ? library_.Get() : GetModuleHandleW(nullptr);
}

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
