#pragma once

#include <optional>
#include <string>

#include "platform/registry.h"
#include "platform/system_code.h"
#include "platform/windows/handles.h"
#include "registry_text/registry_key.h"

namespace carrovan {

HKEY RootKey(RegistryHive hive);

// Empty when the key is missing or the access is denied.
RegistryKeyHandle OpenRegistryKey(RegistryHive hive, const std::wstring& keyPath, REGSAM access);

// Changes the registry of this Windows machine. Key paths are relative to the hive; each operation
// returns kSystemOk or the system's error number.

// Creates the key and its parents; a key that is there is left as it is.
[[nodiscard]] SystemCode CreateRegistryKey(RegistryHive hive, const std::wstring& keyPath);

// Sets a value of a key that is there.
[[nodiscard]] SystemCode SetRegistryValue(RegistryHive hive, const std::wstring& keyPath,
                                          const RegistryValue& value);

// Nothing when the key or the value is missing or cannot be read.
std::optional<RegistryValue> QueryRegistryValue(RegistryHive hive, const std::wstring& keyPath,
                                                const std::wstring& name);

// Deletes a key with its values and subkeys; a missing key gives kFileNotFound. An empty path,
// which is the hive itself, is refused with kInvalidName.
[[nodiscard]] SystemCode DeleteRegistryTree(RegistryHive hive, const std::wstring& keyPath);

// The registry of this Windows machine.
class WindowsRegistry : public RegistryEditor {
 public:
  bool CanOpenKey(RegistryHive hive, const std::wstring& keyPath) const override;
  std::optional<std::vector<std::wstring>> SubkeyNames(RegistryHive hive,
                                                       const std::wstring& keyPath) const override;
  std::optional<std::vector<RegistryValue>> Values(RegistryHive hive,
                                                   const std::wstring& keyPath) const override;
  SystemCode TryOpen(RegistryHive hive, const std::wstring& keyPath) const override;
  std::optional<std::uint32_t> ValueType(RegistryHive hive, const std::wstring& keyPath,
                                         const std::wstring& name) const override;
  SystemCode SetValues(RegistryHive hive, const std::wstring& keyPath,
                       const std::vector<RegistryValue>& values) override;
  SystemCode CreateKey(RegistryHive hive, const std::wstring& keyPath) override;
  SystemCode DeleteValue(RegistryHive hive, const std::wstring& keyPath,
                         const std::wstring& name) override;
  SystemCode DeleteTree(RegistryHive hive, const std::wstring& keyPath) override;
  SystemCode CopyTree(RegistryHive sourceHive, const std::wstring& sourcePath,
                      RegistryHive targetHive, const std::wstring& targetPath) override;
  SystemCode Flush(RegistryHive hive) override;
};

}  // namespace carrovan
