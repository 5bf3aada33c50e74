#include "platform/windows/windows_known_folders.h"

#include <windows.h>

#include <shlobj.h>

#include <array>

#include "platform/path_text.h"

namespace carrovan {
namespace {

std::optional<std::wstring> ShellFolder(int folder) {
  std::array<wchar_t, kFixedPathBuffer> path = {};
  const HRESULT result =
      SHGetFolderPathW(nullptr, folder, nullptr, SHGFP_TYPE_CURRENT, path.data());
  if (result != S_OK) return std::nullopt;
  return path.data();
}

}  // namespace

std::optional<std::wstring> WindowsKnownFolders::RoamingAppData() const {
  return ShellFolder(CSIDL_APPDATA);
}

std::optional<std::wstring> WindowsKnownFolders::LocalAppData() const {
  return ShellFolder(CSIDL_LOCAL_APPDATA);
}

std::optional<std::wstring> WindowsKnownFolders::TempPath() const {
  std::array<wchar_t, kFixedPathBuffer> path = {};
  const DWORD length = GetTempPathW(static_cast<DWORD>(path.size()), path.data());
  // A path that does not fit is reported by its length and not written.
  if (length == 0 || length >= path.size()) return std::nullopt;
  return std::wstring(path.data(), length);
}

}  // namespace carrovan
