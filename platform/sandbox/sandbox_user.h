#pragma once

#include <string>
#include <utility>

#include "platform/user_identity.h"

namespace carrovan {

// The user of a machine in a folder, with the profile where a freshly installed system has it.
class SandboxUser : public UserIdentity {
 public:
  explicit SandboxUser(std::wstring name) : name_(std::move(name)) {}

  std::optional<std::wstring> UserName() const override;
  std::optional<std::wstring> ProfileFolder() const override;

 private:
  std::wstring name_;
};

}  // namespace carrovan
