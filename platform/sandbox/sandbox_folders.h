#pragma once

#include <string>

#include "platform/known_folders.h"

namespace carrovan {

// The folders that a user has on a freshly installed system.
class SandboxFolders : public KnownFolders {
 public:
  explicit SandboxFolders(const std::wstring& userName)
      : appData_(L"C:\\Users\\" + userName + L"\\AppData\\") {}

  std::optional<std::wstring> RoamingAppData() const override { return appData_ + L"Roaming"; }
  std::optional<std::wstring> LocalAppData() const override { return appData_ + L"Local"; }
  std::optional<std::wstring> TempPath() const override;

 private:
  std::wstring appData_;
};

}  // namespace carrovan
