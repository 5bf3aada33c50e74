#include "platform/windows/windows_registry_editor.h"

#include "platform/windows/registry_key.h"
#include "platform/windows/registry_writer.h"

#include <shlwapi.h>

namespace carrovan {
namespace {

SystemCode CodeOf(LSTATUS status) { return static_cast<SystemCode>(status); }

SystemCode Open(RegistryHive hive, const std::wstring& keyPath, REGSAM access,
                RegistryKeyHandle& key) {
  return CodeOf(RegOpenKeyExW(RootKey(hive), keyPath.c_str(), 0, access, key.Receive()));
}

SystemCode SetValue(const RegistryKeyHandle& key, const RegistryValue& value) {
  return CodeOf(RegSetValueExW(key.Get(), value.name.c_str(), 0, value.type, value.data.data(),
                               static_cast<DWORD>(value.data.size())));
}

}  // namespace

SystemCode WindowsRegistryEditor::TryOpen(RegistryHive hive, const std::wstring& keyPath) const {
  RegistryKeyHandle key;
  return Open(hive, keyPath, KEY_READ | KEY_WRITE, key);
}

std::optional<std::uint32_t> WindowsRegistryEditor::ValueType(RegistryHive hive,
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

SystemCode WindowsRegistryEditor::SetValues(RegistryHive hive, const std::wstring& keyPath,
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

SystemCode WindowsRegistryEditor::CreateKey(RegistryHive hive, const std::wstring& keyPath) {
  return CreateRegistryKey(hive, keyPath);
}

SystemCode WindowsRegistryEditor::DeleteValue(RegistryHive hive, const std::wstring& keyPath,
                                              const std::wstring& name) {
  RegistryKeyHandle key;
  if (const SystemCode code = Open(hive, keyPath, KEY_SET_VALUE, key); code != kSystemOk) {
    return code;
  }
  return CodeOf(RegDeleteValueW(key.Get(), name.c_str()));
}

SystemCode WindowsRegistryEditor::DeleteTree(RegistryHive hive, const std::wstring& keyPath) {
  return DeleteRegistryTree(hive, keyPath);
}

SystemCode WindowsRegistryEditor::CopyTree(RegistryHive sourceHive, const std::wstring& sourcePath,
                                           RegistryHive targetHive,
                                           const std::wstring& targetPath) {
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

}  // namespace carrovan
