#pragma once

#include <optional>
#include <string>

namespace carrovan {

// Where the current user's folders lie. Each answer is nothing when the system cannot tell.
class KnownFolders {
 public:
  virtual ~KnownFolders() = default;

  // Without a trailing backslash.
  virtual std::optional<std::wstring> RoamingAppData() const = 0;
  virtual std::optional<std::wstring> LocalAppData() const = 0;

  // With a trailing backslash; at most 260 characters, as the system's own buffer holds.
  virtual std::optional<std::wstring> TempPath() const = 0;
};

}  // namespace carrovan
