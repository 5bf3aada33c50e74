#pragma once

#include <string>

#include "platform/registry.h"
#include "platform/windows/handles.h"

namespace carrovan {

HKEY RootKey(RegistryHive hive);

// Empty when the key is missing or the access is denied.
RegistryKeyHandle OpenRegistryKey(RegistryHive hive, const std::wstring& keyPath, REGSAM access);

}  // namespace carrovan
