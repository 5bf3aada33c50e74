#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/registry_value.h"
#include "platform/text.h"

namespace carrovan {

// A registry key with its values and everything below it. Names are found without regard to case
// and keep the spelling they were made with. Key paths are relative; backslashes without a name
// between them count as one.
class RegistryKey {
 public:
  using Subkeys = std::map<std::wstring, std::unique_ptr<RegistryKey>, NameLess>;

  // Null when the key is missing. An empty path is this key.
  const RegistryKey* Find(std::wstring_view path) const;

  // The key at the path, made with its parents where it is missing. The caller keeps to the limits.
  RegistryKey& Make(std::wstring_view path);

  // Removes a key with everything below it. False when it is missing or the path is empty.
  bool Remove(std::wstring_view path);

  // In the order in which the system keeps keys: by name.
  const Subkeys& AllSubkeys() const { return subkeys_; }

  // Null when the value is missing.
  const RegistryValue* Value(std::wstring_view name) const;

  // In the order in which the system keeps values: as they were made.
  std::vector<const RegistryValue*> AllValues() const;

  // Gets every value of the other key and everything below it, in place of what has the same name.
  // The other key is not this one and not below it.
  void CopyFrom(const RegistryKey& source);

  // A value that is there keeps its place and the spelling of its name.
  void SetValue(RegistryValue value);
  void RemoveValue(std::wstring_view name);

 private:
  struct PlacedValue {
    std::uint64_t place = 0;
    RegistryValue value;
  };

  Subkeys subkeys_;
  std::map<std::wstring, PlacedValue, NameLess> values_;
  std::uint64_t nextPlace_ = 0;
};

}  // namespace carrovan
