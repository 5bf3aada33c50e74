#include "platform/windows/registry_key.h"

namespace carrovan {

HKEY RootKey(RegistryHive hive) {
  return hive == RegistryHive::kCurrentUser ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
}

RegistryKeyHandle OpenRegistryKey(RegistryHive hive, const std::wstring& keyPath, REGSAM access) {
  RegistryKeyHandle key;
  RegOpenKeyExW(RootKey(hive), keyPath.c_str(), 0, access, key.Receive());
  return key;
}

}  // namespace carrovan
