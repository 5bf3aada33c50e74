#include "platform/windows/windows_user_identity.h"

#include <windows.h>

#include <array>

#include "platform/path_text.h"

namespace carrovan {

std::optional<std::wstring> WindowsUserIdentity::UserName() const {
  std::array<wchar_t, 256> name = {};
  auto size = static_cast<DWORD>(name.size());
  if (GetUserNameW(name.data(), &size) == FALSE) return std::nullopt;
  return name.data();
}

std::optional<std::wstring> WindowsUserIdentity::ProfileFolder() const {
  std::array<wchar_t, kFixedPathBuffer> folder = {};
  const DWORD length =
      GetEnvironmentVariableW(L"USERPROFILE", folder.data(), static_cast<DWORD>(folder.size()));
  // A value that does not fit is reported by its length and not written.
  if (length == 0 || length >= folder.size()) return std::nullopt;
  return std::wstring(folder.data(), length);
}

std::unique_ptr<UserIdentity> OpenHostUser() { return std::make_unique<WindowsUserIdentity>(); }

}  // namespace carrovan
