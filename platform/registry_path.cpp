#include "platform/registry_path.h"

#include <algorithm>

namespace carrovan {

std::wstring RootName(RegistryHive hive) {
  return hive == RegistryHive::kCurrentUser ? L"HKEY_CURRENT_USER" : L"HKEY_LOCAL_MACHINE";
}

std::wstring FullKeyPath(RegistryHive hive, const std::wstring& keyPath) {
  return RootName(hive) + L"\\" + keyPath;
}

std::wstring JoinKey(const std::wstring& keyPath, const std::wstring& subkey) {
  return keyPath.empty() ? subkey : keyPath + L"\\" + subkey;
}

std::wstring_view TakeKeyName(std::wstring_view& path) {
  path.remove_prefix(std::min(path.find_first_not_of(L'\\'), path.size()));
  const std::wstring_view name = path.substr(0, path.find(L'\\'));
  path.remove_prefix(name.size());
  return name;
}

}  // namespace carrovan
