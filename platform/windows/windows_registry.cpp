#include "platform/windows/windows_registry.h"

#include <shlwapi.h>
#include <array>
#include <utility>
#include <vector>

namespace carrovan {

HKEY RootKey(RegistryHive hive) {
  return hive == RegistryHive::kCurrentUser ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
}

RegistryKeyHandle OpenRegistryKey(RegistryHive hive, const std::wstring& keyPath, REGSAM access) {
  RegistryKeyHandle key;
  RegOpenKeyExW(RootKey(hive), keyPath.c_str(), 0, access, key.Receive());
  return key;
}

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
  std::vector<std::uint8_t> data;
  DWORD type = 0;
  DWORD sizeBytes = 0;
  LSTATUS status = ERROR_MORE_DATA;
  // Another program may make the value longer between the two calls.
  while (status == ERROR_MORE_DATA) {
    if (RegQueryValueExW(key.Get(), name.c_str(), nullptr, &type, nullptr, &sizeBytes) !=
        ERROR_SUCCESS) {
      return std::nullopt;
    }
    data.resize(sizeBytes);
    status = RegQueryValueExW(key.Get(), name.c_str(), nullptr, &type, data.data(), &sizeBytes);
  }
  if (status != ERROR_SUCCESS) return std::nullopt;
  data.resize(sizeBytes);
  return RegistryValue{name, type, std::move(data)};
}

SystemCode DeleteRegistryTree(RegistryHive hive, const std::wstring& keyPath) {
  if (keyPath.empty()) return kInvalidName;
  return CodeOf(RegDeleteTreeW(RootKey(hive), keyPath.c_str()));
}

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
  std::vector<wchar_t> name(kLongestValueName + 1);
  for (DWORD index = 0;; ++index) {
    auto length = static_cast<DWORD>(name.size());
    const LSTATUS status =
        RegEnumValueW(key.Get(), index, name.data(), &length, nullptr, nullptr, nullptr, nullptr);
    if (status != ERROR_SUCCESS) return values;
    auto value = QueryRegistryValue(hive, keyPath, std::wstring(name.data(), length));
    if (value) values.push_back(std::move(*value));
  }
}

namespace {

SystemCode Open(RegistryHive hive, const std::wstring& keyPath, REGSAM access,
                RegistryKeyHandle& key) {
  return CodeOf(RegOpenKeyExW(RootKey(hive), keyPath.c_str(), 0, access, key.Receive()));
}

SystemCode SetValue(const RegistryKeyHandle& key, const RegistryValue& value) {
  return CodeOf(RegSetValueExW(key.Get(), value.name.c_str(), 0, value.type, value.data.data(),
                               static_cast<DWORD>(value.data.size())));
}

}  // namespace

SystemCode WindowsRegistry::TryOpen(RegistryHive hive, const std::wstring& keyPath) const {
  RegistryKeyHandle key;
  return Open(hive, keyPath, KEY_READ | KEY_WRITE, key);
}

std::optional<std::uint32_t> WindowsRegistry::ValueType(RegistryHive hive,
                                                        const std::wstring& keyPath,
                                                        const std::wstring& name) const {
  const RegistryKeyHandle key = OpenRegistryKey(hive, keyPath, KEY_QUERY_VALUE);
  DWORD type = 0;
  if (!key || RegQueryValueExW(key.Get(), name.c_str(), nullptr, &type, nullptr, nullptr) !=
                  ERROR_SUCCESS) {
    return std::nullopt;
  }
  return type;
}

SystemCode WindowsRegistry::SetValues(RegistryHive hive, const std::wstring& keyPath,
                                      const std::vector<RegistryValue>& values) {
  RegistryKeyHandle key;
  SystemCode first = Open(hive, keyPath, KEY_SET_VALUE, key);
  if (first != kSystemOk) return first;
  for (const RegistryValue& value : values) {
    const SystemCode code = SetValue(key, value);
    if (first == kSystemOk) first = code;
  }
  return first;
}

SystemCode WindowsRegistry::CreateKey(RegistryHive hive, const std::wstring& keyPath) {
  return CreateRegistryKey(hive, keyPath);
}

SystemCode WindowsRegistry::DeleteValue(RegistryHive hive, const std::wstring& keyPath,
                                        const std::wstring& name) {
  RegistryKeyHandle key;
  if (const SystemCode code = Open(hive, keyPath, KEY_SET_VALUE, key); code != kSystemOk) {
    return code;
  }
  return CodeOf(RegDeleteValueW(key.Get(), name.c_str()));
}

SystemCode WindowsRegistry::DeleteTree(RegistryHive hive, const std::wstring& keyPath) {
  return DeleteRegistryTree(hive, keyPath);
}

SystemCode WindowsRegistry::CopyTree(RegistryHive sourceHive, const std::wstring& sourcePath,
                                     RegistryHive targetHive, const std::wstring& targetPath) {
  RegistryKeyHandle source;
  if (const SystemCode code = Open(sourceHive, sourcePath, KEY_READ, source); code != kSystemOk) {
    return code;
  }
  RegistryKeyHandle target;
  const LSTATUS created = RegCreateKeyExW(
      RootKey(targetHive), targetPath.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
      KEY_READ | KEY_SET_VALUE | KEY_CREATE_SUB_KEY, nullptr, target.Receive(), nullptr);
  if (created != ERROR_SUCCESS) return CodeOf(created);
  return CodeOf(SHCopyKeyW(source.Get(), L"", target.Get(), 0));
}

SystemCode WindowsRegistry::Flush(RegistryHive hive) { return CodeOf(RegFlushKey(RootKey(hive))); }

}  // namespace carrovan
