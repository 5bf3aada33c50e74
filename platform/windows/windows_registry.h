#pragma once

#include "platform/registry.h"

namespace carrovan {

// The registry of this Windows machine.
class WindowsRegistry : public RegistryReader {
 public:
  bool CanOpenKey(RegistryHive hive, const std::wstring& keyPath) const override;
  std::optional<std::vector<std::wstring>> SubkeyNames(RegistryHive hive,
                                                       const std::wstring& keyPath) const override;
  std::optional<std::vector<RegistryValue>> Values(RegistryHive hive,
                                                   const std::wstring& keyPath) const override;
};

}  // namespace carrovan
