#include "platform/windows/windows_registry.h"

#include <array>

#include "platform/windows/registry_key.h"
#include "platform/windows/registry_writer.h"

namespace carrovan {
namespace {

// The system's limit, with the terminating zero.
constexpr std::size_t kLongestValueName = 16384;

}  // namespace

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

std::optional<std::vector<RegistryValue>> WindowsRegistry::Values(
    RegistryHive hive, const std::wstring& keyPath) const {
  const RegistryKeyHandle key = OpenRegistryKey(hive, keyPath, KEY_QUERY_VALUE);
  if (!key) return std::nullopt;
  std::vector<RegistryValue> values;
  std::vector<wchar_t> name(kLongestValueName);
  for (DWORD index = 0;; ++index) {
    auto length = static_cast<DWORD>(name.size());
    const LSTATUS status =
        RegEnumValueW(key.Get(), index, name.data(), &length, nullptr, nullptr, nullptr, nullptr);
    if (status != ERROR_SUCCESS) return values;
    auto value = QueryRegistryValue(hive, keyPath, std::wstring(name.data(), length));
    if (value) values.push_back(std::move(*value));
  }
}

}  // namespace carrovan
