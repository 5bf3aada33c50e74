#include "platform/windows/registry_writer.h"

#include "platform/windows/registry_key.h"

namespace carrovan {
namespace {

SystemCode CodeOf(LSTATUS status) { return static_cast<SystemCode>(status); }

}  // namespace

SystemCode CreateRegistryKey(RegistryHive hive, const std::wstring& keyPath) {
  RegistryKeyHandle key;
  return CodeOf(RegCreateKeyExW(RootKey(hive), keyPath.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                KEY_READ, nullptr, key.Receive(), nullptr));
}

SystemCode SetRegistryValue(RegistryHive hive, const std::wstring& keyPath,
                            const RegistryValue& value) {
  RegistryKeyHandle key;
  const LSTATUS opened =
      RegOpenKeyExW(RootKey(hive), keyPath.c_str(), 0, KEY_SET_VALUE, key.Receive());
  if (opened != ERROR_SUCCESS) return CodeOf(opened);
  return CodeOf(RegSetValueExW(key.Get(), value.name.c_str(), 0, value.type, value.data.data(),
                               static_cast<DWORD>(value.data.size())));
}

std::optional<RegistryValue> QueryRegistryValue(RegistryHive hive, const std::wstring& keyPath,
                                                const std::wstring& name) {
  const RegistryKeyHandle key = OpenRegistryKey(hive, keyPath, KEY_QUERY_VALUE);
  if (!key) return std::nullopt;
  RegistryValue value{name, kRegNone, {}};
  DWORD type = 0;
  DWORD sizeBytes = 0;
  LSTATUS status = ERROR_MORE_DATA;
  // Another program may make the value longer between the two calls.
  while (status == ERROR_MORE_DATA) {
    if (RegQueryValueExW(key.Get(), name.c_str(), nullptr, &type, nullptr, &sizeBytes) !=
        ERROR_SUCCESS) {
      return std::nullopt;
    }
    value.data.resize(sizeBytes);
    status =
        RegQueryValueExW(key.Get(), name.c_str(), nullptr, &type, value.data.data(), &sizeBytes);
  }
  if (status != ERROR_SUCCESS) return std::nullopt;
  value.data.resize(sizeBytes);
  value.type = type;
  return value;
}

SystemCode DeleteRegistryTree(RegistryHive hive, const std::wstring& keyPath) {
  if (keyPath.empty()) return kInvalidName;
  return CodeOf(RegDeleteTreeW(RootKey(hive), keyPath.c_str()));
}

}  // namespace carrovan
