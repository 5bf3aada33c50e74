#pragma once

#include "platform/known_folders.h"

namespace carrovan {

// The folders of the user who runs this program.
class WindowsKnownFolders : public KnownFolders {
 public:
  std::optional<std::wstring> RoamingAppData() const override;
  std::optional<std::wstring> LocalAppData() const override;
  std::optional<std::wstring> TempPath() const override;
};

}  // namespace carrovan
