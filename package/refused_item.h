#pragma once

#include <string>

namespace carrovan {

// Something in a package that is not right.
struct RefusedItem {
  std::wstring name;    // entry name, the description's file name, or "*" for the whole package
  std::wstring reason;  // what is wrong with it, as it reads behind the name and a colon

  bool operator==(const RefusedItem&) const = default;
};

}  // namespace carrovan
