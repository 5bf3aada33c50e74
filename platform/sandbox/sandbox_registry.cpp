#include "platform/sandbox/sandbox_registry.h"

#include <utility>

#include "platform/registry_file.h"

namespace carrovan {
namespace {

constexpr RegistryHive kHives[] = {RegistryHive::kCurrentUser, RegistryHive::kLocalMachine};

std::vector<RegistryValueChange> SettingOf(const std::vector<const RegistryValue*>& values) {
  std::vector<RegistryValueChange> changes;
  changes.reserve(values.size());
  for (const RegistryValue* value : values) changes.push_back({*value, false});
  return changes;
}

// What makes a key with everything below it at another place.
void AddCopy(const RegistryKey& source, RegistryHive hive, const std::wstring& path,
             RegistryFile& changes) {
  changes.keys.push_back({hive, path, false, SettingOf(source.AllValues())});
  for (const auto& [name, subkey] : source.AllSubkeys()) {
    AddCopy(*subkey, hive, JoinKey(path, name), changes);
  }
}

}  // namespace

std::optional<std::wstring> SandboxRegistry::Load() {
  for (SandboxHive& hive : hives_) {
    if (auto problem = hive.Load()) return problem;
  }
  return std::nullopt;
}

bool SandboxRegistry::CanOpenKey(RegistryHive hive, const std::wstring& keyPath) const {
  return Find(hive, keyPath) != nullptr;
}

std::optional<std::vector<std::wstring>> SandboxRegistry::SubkeyNames(
    RegistryHive hive, const std::wstring& keyPath) const {
  const RegistryKey* key = Find(hive, keyPath);
  if (key == nullptr) return std::nullopt;
  std::vector<std::wstring> names;
  for (const auto& [name, subkey] : key->AllSubkeys()) names.push_back(name);
  return names;
}

std::optional<std::vector<RegistryValue>> SandboxRegistry::Values(
    RegistryHive hive, const std::wstring& keyPath) const {
  const RegistryKey* key = Find(hive, keyPath);
  if (key == nullptr) return std::nullopt;
  std::vector<RegistryValue> values;
  for (const RegistryValue* value : key->AllValues()) values.push_back(*value);
  return values;
}

const RegistryKey* SandboxRegistry::Find(RegistryHive hive, std::wstring_view keyPath) const {
  return hives_[static_cast<std::size_t>(hive)].Root().Find(keyPath);
}

bool SandboxRegistry::Change(RegistryHive hive, const std::function<void(RegistryKey&)>& change) {
  return Of(hive).Rewrite(change) == kSystemOk;
}

bool SandboxRegistry::Merge(const RegistryFile& file) {
  bool merged = true;
  for (const RegistryHive hive : kHives) {
    if (Concerns(file, hive)) merged = Of(hive).Apply(file) == kSystemOk && merged;
  }
  return merged;
}

SystemCode SandboxRegistry::TryOpen(RegistryHive hive, const std::wstring& keyPath) const {
  return Find(hive, keyPath) != nullptr ? kSystemOk : kFileNotFound;
}

std::optional<std::uint32_t> SandboxRegistry::ValueType(RegistryHive hive,
                                                        const std::wstring& keyPath,
                                                        const std::wstring& name) const {
  const RegistryKey* const key = Find(hive, keyPath);
  const RegistryValue* const value = key == nullptr ? nullptr : key->Value(name);
  return value == nullptr ? std::nullopt : std::optional(value->type);
}

SystemCode SandboxRegistry::SetValues(RegistryHive hive, const std::wstring& keyPath,
                                      const std::vector<RegistryValue>& values) {
  RegistryKeyChange change{hive, keyPath, false, {}};
  for (const RegistryValue& value : values) change.values.push_back({value, false});
  return ChangeKey(std::move(change));
}

SystemCode SandboxRegistry::CreateKey(RegistryHive hive, const std::wstring& keyPath) {
  if (Find(hive, keyPath) != nullptr) return kSystemOk;
  return Apply({hive, keyPath, false, {}});
}

SystemCode SandboxRegistry::DeleteValue(RegistryHive hive, const std::wstring& keyPath,
                                        const std::wstring& name) {
  if (!ValueType(hive, keyPath, name)) return kFileNotFound;
  return ChangeKey({hive, keyPath, false, {{{name, kRegNone, {}}, true}}});
}

SystemCode SandboxRegistry::DeleteTree(RegistryHive hive, const std::wstring& keyPath) {
  std::wstring_view path = keyPath;
  if (TakeKeyName(path).empty()) return kInvalidName;
  return ChangeKey({hive, keyPath, true, {}});
}

SystemCode SandboxRegistry::CopyTree(RegistryHive sourceHive, const std::wstring& sourcePath,
                                     RegistryHive targetHive, const std::wstring& targetPath) {
  const RegistryKey* const source = Find(sourceHive, sourcePath);
  if (source == nullptr) return kFileNotFound;
  RegistryFile changes;
  AddCopy(*source, targetHive, targetPath, changes);
  return Of(targetHive).Apply(changes);
}

SystemCode SandboxRegistry::ChangeKey(RegistryKeyChange change) {
  if (Find(change.hive, change.keyPath) == nullptr) return kFileNotFound;
  return Apply(std::move(change));
}

SystemCode SandboxRegistry::Apply(RegistryKeyChange change) {
  const RegistryHive hive = change.hive;
  RegistryFile file;
  file.keys.push_back(std::move(change));
  return Of(hive).Apply(file);
}

SystemCode SandboxRegistry::Flush(RegistryHive hive) {
  return Of(hive).Flush() == FileStatus::kDone ? kSystemOk : kAccessDenied;
}

}  // namespace carrovan
