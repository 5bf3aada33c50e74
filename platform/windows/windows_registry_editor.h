#pragma once

#include "platform/registry_editor.h"

namespace carrovan {

// The registry of this Windows machine.
class WindowsRegistryEditor : public RegistryEditor {
 public:
  [[nodiscard]] SystemCode TryOpen(RegistryHive hive, const std::wstring& keyPath) const override;
  std::optional<std::uint32_t> ValueType(RegistryHive hive, const std::wstring& keyPath,
                                         const std::wstring& name) const override;
  [[nodiscard]] SystemCode SetValues(RegistryHive hive, const std::wstring& keyPath,
                                     const std::vector<RegistryValue>& values) override;
  [[nodiscard]] SystemCode CreateKey(RegistryHive hive, const std::wstring& keyPath) override;
  [[nodiscard]] SystemCode DeleteValue(RegistryHive hive, const std::wstring& keyPath,
                                       const std::wstring& name) override;
  [[nodiscard]] SystemCode DeleteTree(RegistryHive hive, const std::wstring& keyPath) override;
  [[nodiscard]] SystemCode CopyTree(RegistryHive sourceHive, const std::wstring& sourcePath,
                                    RegistryHive targetHive,
                                    const std::wstring& targetPath) override;
};

}  // namespace carrovan
