#pragma once

#include "platform/user_identity.h"

namespace carrovan {

// The user who runs this program.
class WindowsUserIdentity : public UserIdentity {
 public:
  std::optional<std::wstring> UserName() const override;
  std::optional<std::wstring> ProfileFolder() const override;
};

}  // namespace carrovan
