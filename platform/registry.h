#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/registry_value.h"

namespace carrovan {

enum class RegistryHive { kCurrentUser, kLocalMachine };

// Looks at registry keys and cannot change them. Key paths are relative to the hive, without a
// leading backslash; names are found without regard to case.
class RegistryReader {
 public:
  virtual ~RegistryReader() = default;

  // True when the key is there and the user may read it.
  virtual bool CanOpenKey(RegistryHive hive, const std::wstring& keyPath) const = 0;

  // Names of the subkeys in the registry's own order; nothing when the key cannot be opened.
  virtual std::optional<std::vector<std::wstring>> SubkeyNames(
      RegistryHive hive, const std::wstring& keyPath) const = 0;

  // The key's own values in the registry's own order; nothing when the key cannot be opened.
  virtual std::optional<std::vector<RegistryValue>> Values(RegistryHive hive,
                                                           const std::wstring& keyPath) const = 0;
};

}  // namespace carrovan
