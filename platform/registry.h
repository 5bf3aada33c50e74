#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/system_code.h"
#include "registry_text/registry_key.h"

namespace carrovan {

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

// Changes registry keys and values. Each operation that answers with a code gives kSystemOk or the
// system's error number: kFileNotFound for a missing key, kAccessDenied for one that the user may
// not change.
class RegistryEditor : public RegistryReader {
 public:
  // Whether the key opens for reading and writing; changes nothing.
  [[nodiscard]] virtual SystemCode TryOpen(RegistryHive hive,
                                           const std::wstring& keyPath) const = 0;

  // Nothing when the key or the value is missing or cannot be read.
  virtual std::optional<std::uint32_t> ValueType(RegistryHive hive, const std::wstring& keyPath,
                                                 const std::wstring& name) const = 0;

  // Sets values of a key that is there. Each is tried; the code is that of the first that failed.
  [[nodiscard]] virtual SystemCode SetValues(RegistryHive hive, const std::wstring& keyPath,
                                             const std::vector<RegistryValue>& values) = 0;

  // Creates a key and the keys above it; one that is there stays as it is.
  [[nodiscard]] virtual SystemCode CreateKey(RegistryHive hive, const std::wstring& keyPath) = 0;

  // Deletes one value of a key; kFileNotFound when the key or the value is missing.
  [[nodiscard]] virtual SystemCode DeleteValue(RegistryHive hive, const std::wstring& keyPath,
                                               const std::wstring& name) = 0;

  // Deletes a key with its values and subkeys. An empty path, which is the hive itself, is refused
  // with kInvalidName.
  [[nodiscard]] virtual SystemCode DeleteTree(RegistryHive hive, const std::wstring& keyPath) = 0;

  // Creates the target key where it is missing and copies all values and subkeys of the source into
  // it. When the source cannot be read, no target is created.
  [[nodiscard]] virtual SystemCode CopyTree(RegistryHive sourceHive, const std::wstring& sourcePath,
                                            RegistryHive targetHive,
                                            const std::wstring& targetPath) = 0;

  // Waits until the hive is as it is now where a loss of power cannot take it. Until then any of
  // its changes may be lost.
  [[nodiscard]] virtual SystemCode Flush(RegistryHive hive) = 0;
};

}  // namespace carrovan
