#include "preview/overlay_registry.h"

#include <algorithm>

#include "registry_text/registry_key.h"
#include "text/text.h"

namespace carrovan {
namespace {

std::wstring ParentOf(const std::wstring& keyPath) {
  std::wstring parent;
  std::wstring_view rest = keyPath;
  for (auto name = TakeKeyName(rest); !name.empty();) {
    const auto next = TakeKeyName(rest);
    if (next.empty()) break;
    parent = JoinKey(parent, std::wstring(name));
    name = next;
  }
  return parent;
}

bool ComesBefore(const std::wstring& a, const std::wstring& b) { return CompareNames(a, b) < 0; }

}  // namespace

OverlayRegistry::OverlayRegistry(const RegistryEditor& machine) : machine_(machine) {
  for (OverlayKey& root : roots_) root.showsMachine = true;
}

OverlayRegistry::Seen OverlayRegistry::Look(RegistryHive hive, const std::wstring& keyPath) const {
  Seen seen{&Root(hive), true};
  std::wstring_view rest = keyPath;
  for (auto name = TakeKeyName(rest); !name.empty(); name = TakeKeyName(rest)) {
    if (seen.node == nullptr) break;
    const auto found = seen.node->below.find(FoldedName(name));
    seen.node = found == seen.node->below.end() ? nullptr : found->second.get();
    if (seen.node != nullptr) seen.showsMachine = seen.node->showsMachine;
    if (seen.node != nullptr && seen.node->isRemoved) return {nullptr, false};
  }
  return seen;
}

bool OverlayRegistry::CanOpenKey(RegistryHive hive, const std::wstring& keyPath) const {
  const Seen seen = Look(hive, keyPath);
  return seen.showsMachine ? machine_.CanOpenKey(hive, keyPath) : seen.node != nullptr;
}

std::optional<std::vector<std::wstring>> OverlayRegistry::SubkeyNames(
    RegistryHive hive, const std::wstring& keyPath) const {
  const Seen seen = Look(hive, keyPath);
  std::vector<std::wstring> names;
  if (seen.showsMachine) {
    auto machine = machine_.SubkeyNames(hive, keyPath);
    if (!machine || seen.node == nullptr) return machine;
    std::erase_if(*machine, [&seen](const std::wstring& name) {
      const auto found = seen.node->below.find(FoldedName(name));
      return found != seen.node->below.end() && !found->second->showsMachine;
    });
    names = std::move(*machine);
  } else if (seen.node == nullptr) {
    return std::nullopt;
  }
  const std::size_t shown = names.size();
  for (const auto& [folded, key] : seen.node->below) {
    if (!key->isRemoved && !key->showsMachine) names.push_back(key->name);
  }
  // What only shows through is in the registry's own order.
  if (names.size() > shown) std::sort(names.begin(), names.end(), ComesBefore);
  return names;
}

std::optional<std::vector<RegistryValue>> OverlayRegistry::Values(
    RegistryHive hive, const std::wstring& keyPath) const {
  const Seen seen = Look(hive, keyPath);
  if (seen.node == nullptr || seen.node->values == nullptr) {
    return seen.showsMachine ? machine_.Values(hive, keyPath) : std::nullopt;
  }
  std::vector<RegistryValue> values;
  for (const RegistryValue* value : seen.node->values->AllValues()) values.push_back(*value);
  return values;
}

SystemCode OverlayRegistry::TryOpen(RegistryHive hive, const std::wstring& keyPath) const {
  const Seen seen = Look(hive, keyPath);
  if (seen.showsMachine) return machine_.TryOpen(hive, keyPath);
  return seen.node != nullptr ? kSystemOk : kFileNotFound;
}

std::optional<std::uint32_t> OverlayRegistry::ValueType(RegistryHive hive,
                                                        const std::wstring& keyPath,
                                                        const std::wstring& name) const {
  const Seen seen = Look(hive, keyPath);
  if (seen.node == nullptr || seen.node->values == nullptr) {
    return seen.showsMachine ? machine_.ValueType(hive, keyPath, name) : std::nullopt;
  }
  const RegistryValue* const value = seen.node->values->Value(name);
  return value == nullptr ? std::nullopt : std::optional(value->type);
}

SystemCode OverlayRegistry::SetValues(RegistryHive hive, const std::wstring& keyPath,
                                      const std::vector<RegistryValue>& values) {
  if (const SystemCode code = TryOpen(hive, keyPath); code != kSystemOk) return code;
  if (values.empty()) return kSystemOk;
  RegistryKey& key = ValuesToChange(hive, keyPath);
  for (const RegistryValue& value : values) key.SetValue(value);
  return kSystemOk;
}

SystemCode OverlayRegistry::CreateKey(RegistryHive hive, const std::wstring& keyPath) {
  const SystemCode there = TryOpen(hive, keyPath);
  if (there != kFileNotFound) return there;
  // The innermost key that is there decides whether a new one can be made in it.
  std::wstring above = ParentOf(keyPath);
  SystemCode code = TryOpen(hive, above);
  while (code == kFileNotFound && !above.empty()) {
    above = ParentOf(above);
    code = TryOpen(hive, above);
  }
  if (code == kSystemOk) Make(hive, keyPath);
  return code;
}

SystemCode OverlayRegistry::DeleteValue(RegistryHive hive, const std::wstring& keyPath,
                                        const std::wstring& name) {
  if (const SystemCode code = TryOpen(hive, keyPath); code != kSystemOk) return code;
  if (!ValueType(hive, keyPath, name)) return kFileNotFound;
  ValuesToChange(hive, keyPath).RemoveValue(name);
  return kSystemOk;
}

SystemCode OverlayRegistry::DeleteTree(RegistryHive hive, const std::wstring& keyPath) {
  if (keyPath.empty()) return kInvalidName;
  if (const SystemCode code = TryOpen(hive, keyPath); code != kSystemOk) return code;
  OverlayKey& key = Make(hive, keyPath);
  key.isRemoved = true;
  key.showsMachine = false;
  key.values.reset();
  key.below.clear();
  return kSystemOk;
}

SystemCode OverlayRegistry::CopyTree(RegistryHive sourceHive, const std::wstring& sourcePath,
                                     RegistryHive targetHive, const std::wstring& targetPath) {
  if (!CanOpenKey(sourceHive, sourcePath)) {
    const SystemCode code = TryOpen(sourceHive, sourcePath);
    return code == kSystemOk ? kAccessDenied : code;
  }
  RegistryKey copy;  // the target may lie below the source
  ReadTree(sourceHive, sourcePath, copy);
  if (const SystemCode code = CreateKey(targetHive, targetPath); code != kSystemOk) return code;
  WriteTree(targetHive, targetPath, copy);
  return kSystemOk;
}

OverlayKey& OverlayRegistry::Make(RegistryHive hive, const std::wstring& keyPath) {
  OverlayKey* key = &roots_[static_cast<std::size_t>(hive)];
  std::wstring path;
  std::wstring_view rest = keyPath;
  for (auto name = TakeKeyName(rest); !name.empty(); name = TakeKeyName(rest)) {
    path = JoinKey(path, std::wstring(name));
    auto& child = key->below[FoldedName(name)];
    if (child == nullptr) {
      child = std::make_unique<OverlayKey>();
      child->showsMachine = key->showsMachine && machine_.CanOpenKey(hive, path);
    }
    child->isRemoved = false;
    if (!child->showsMachine && child->values == nullptr) {
      child->values = std::make_unique<RegistryKey>();
      child->name = name;
    }
    key = child.get();
  }
  return *key;
}

RegistryKey& OverlayRegistry::ValuesToChange(RegistryHive hive, const std::wstring& keyPath) {
  OverlayKey& key = Make(hive, keyPath);
  if (key.values == nullptr) {
    key.values = std::make_unique<RegistryKey>();
    for (RegistryValue& value :
         machine_.Values(hive, keyPath).value_or(std::vector<RegistryValue>())) {
      key.values->SetValue(std::move(value));
    }
  }
  return *key.values;
}

void OverlayRegistry::ReadTree(RegistryHive hive, const std::wstring& keyPath,
                               RegistryKey& copy) const {
  for (RegistryValue& value : Values(hive, keyPath).value_or(std::vector<RegistryValue>())) {
    copy.SetValue(std::move(value));
  }
  const auto names = SubkeyNames(hive, keyPath);
  if (!names) return;
  for (const std::wstring& name : *names) ReadTree(hive, JoinKey(keyPath, name), copy.Make(name));
}

void OverlayRegistry::WriteTree(RegistryHive hive, const std::wstring& keyPath,
                                const RegistryKey& key) {
  Make(hive, keyPath);
  if (const auto values = key.AllValues(); !values.empty()) {
    RegistryKey& target = ValuesToChange(hive, keyPath);
    for (const RegistryValue* value : values) target.SetValue(*value);
  }
  for (const auto& [name, subkey] : key.AllSubkeys()) {
    WriteTree(hive, JoinKey(keyPath, name), *subkey);
  }
}

}  // namespace carrovan
