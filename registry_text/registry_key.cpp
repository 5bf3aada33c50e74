#include "registry_text/registry_key.h"

#include <algorithm>
#include <utility>

#include "text/text.h"

namespace carrovan {

RegistryValue MakeStringValue(std::wstring name, const std::wstring& text, std::uint32_t type) {
  return MakeStringValue(std::move(name), ToUtf16(text), type);
}

RegistryValue MakeStringValue(std::wstring name, std::u16string_view text, std::uint32_t type) {
  RegistryData::Bytes data;
  data.reserve(2 * (text.size() + 1));
  const auto add = [&data](char16_t unit) {
    data.push_back(static_cast<std::uint8_t>(unit & 0xFF));
    data.push_back(static_cast<std::uint8_t>(unit >> 8));
  };
  for (const char16_t unit : text) add(unit);
  add(u'\0');
  return {std::move(name), type, std::move(data)};
}

RegistryValue MakeDwordValue(std::wstring name, std::uint32_t number) {
  RegistryData::Bytes data;
  for (int shift = 0; shift < 32; shift += 8) {
    data.push_back(static_cast<std::uint8_t>(number >> shift));
  }
  return {std::move(name), kRegDword, std::move(data)};
}

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
