#pragma once

#include <memory>
#include <optional>
#include <string>

namespace carrovan {

// Who the current user is. Each answer is nothing when the system cannot tell.
class UserIdentity {
 public:
  virtual ~UserIdentity() = default;

  // The account's name; with its terminating zero it fits the system's buffer of 256 characters.
  virtual std::optional<std::wstring> UserName() const = 0;

  // The environment's USERPROFILE as it is set; nothing also when it does not fit a fixed path
  // buffer.
  virtual std::optional<std::wstring> ProfileFolder() const = 0;
};

// The user who runs this program.
std::unique_ptr<UserIdentity> OpenHostUser();

}  // namespace carrovan
