#include "platform/windows/windows_registry.h"

#include <array>

#include "platform/windows/registry_key.h"

namespace carrovan {

bool WindowsRegistry::CanOpenKey(RegistryHive hive, const std::wstring& keyPath) const {
  return static_cast<bool>(OpenRegistryKey(hive, keyPath, KEY_READ));
}

std::optional<std::vector<std::wstring>> WindowsRegistry::SubkeyNames(
    RegistryHive hive, const std::wstring& keyPath) const {
  const RegistryKeyHandle key = OpenRegistryKey(hive, keyPath, KEY_READ);
  if (!key) return std::nullopt;
  std::vector<std::wstring> names;
  std::array<wchar_t, 256> name = {};
  for (DWORD index = 0;; ++index) {
    auto length = static_cast<DWORD>(name.size());
    const LSTATUS status =
        RegEnumKeyExW(key.Get(), index, name.data(), &length, nullptr, nullptr, nullptr, nullptr);
    if (status != ERROR_SUCCESS) return names;
    names.emplace_back(name.data(), length);
  }
}

}  // namespace carrovan
