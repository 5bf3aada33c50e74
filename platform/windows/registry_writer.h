#pragma once

#include <optional>
#include <string>

#include "platform/registry.h"
#include "platform/registry_value.h"
#include "platform/system_code.h"

namespace carrovan {

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

}  // namespace carrovan
