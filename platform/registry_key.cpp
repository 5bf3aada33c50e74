#include "platform/registry_key.h"

#include <algorithm>
#include <utility>

#include "platform/registry_path.h"

namespace carrovan {

const RegistryKey* RegistryKey::Find(std::wstring_view path) const {
  const RegistryKey* key = this;
  for (auto name = TakeKeyName(path); !name.empty(); name = TakeKeyName(path)) {
    const auto found = key->subkeys_.find(name);
    if (found == key->subkeys_.end()) return nullptr;
    key = found->second.get();
  }
  return key;
}

RegistryKey& RegistryKey::Make(std::wstring_view path) {
  RegistryKey* key = this;
  for (auto name = TakeKeyName(path); !name.empty(); name = TakeKeyName(path)) {
    auto found = key->subkeys_.find(name);
    if (found == key->subkeys_.end()) {
      found = key->subkeys_.emplace(name, std::make_unique<RegistryKey>()).first;
    }
    key = found->second.get();
  }
  return *key;
}

bool RegistryKey::Remove(std::wstring_view path) {
  RegistryKey* parent = this;
  std::wstring_view name = TakeKeyName(path);
  for (auto next = TakeKeyName(path); !next.empty(); next = TakeKeyName(path)) {
    const auto found = parent->subkeys_.find(name);
    if (found == parent->subkeys_.end()) return false;
    parent = found->second.get();
    name = next;
  }
  const auto found = parent->subkeys_.find(name);
  if (found == parent->subkeys_.end()) return false;
  parent->subkeys_.erase(found);
  return true;
}

const RegistryValue* RegistryKey::Value(std::wstring_view name) const {
  const auto found = values_.find(name);
  return found == values_.end() ? nullptr : &found->second.value;
}

std::vector<const RegistryValue*> RegistryKey::AllValues() const {
  std::vector<const PlacedValue*> placed;
  placed.reserve(values_.size());
  for (const auto& [name, value] : values_) placed.push_back(&value);
  std::sort(placed.begin(), placed.end(),
            [](const PlacedValue* a, const PlacedValue* b) { return a->place < b->place; });
  std::vector<const RegistryValue*> values;
  values.reserve(placed.size());
  for (const PlacedValue* value : placed) values.push_back(&value->value);
  return values;
}

void RegistryKey::CopyFrom(const RegistryKey& source) {
  for (const RegistryValue* value : source.AllValues()) SetValue(*value);
  for (const auto& [name, subkey] : source.subkeys_) Make(name).CopyFrom(*subkey);
}

void RegistryKey::SetValue(RegistryValue value) {
  const auto found = values_.find(value.name);
  if (found == values_.end()) {
    std::wstring name = value.name;
    values_.emplace(std::move(name), PlacedValue{nextPlace_++, std::move(value)});
    return;
  }
  found->second.value.type = value.type;
  found->second.value.data = std::move(value.data);
}

void RegistryKey::RemoveValue(std::wstring_view name) {
  const auto found = values_.find(name);
  if (found != values_.end()) values_.erase(found);
}

}  // namespace carrovan
