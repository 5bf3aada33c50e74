#pragma once

#include <optional>
#include <string>

namespace carrovan {

class GuidSource {
 public:
  virtual ~GuidSource() = default;

  // A fresh GUID in registry text form, braces included: "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}".
  // Nothing when the system cannot make one.
  virtual std::optional<std::wstring> NewGuid() = 0;
};

}  // namespace carrovan
