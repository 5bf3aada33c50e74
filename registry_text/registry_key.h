#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "registry_text/registry_data.h"
#include "text/text.h"

namespace carrovan {

// Types of registry values, as the system numbers them.
inline constexpr std::uint32_t kRegNone = 0;
inline constexpr std::uint32_t kRegSz = 1;
inline constexpr std::uint32_t kRegExpandSz = 2;
inline constexpr std::uint32_t kRegBinary = 3;
inline constexpr std::uint32_t kRegDword = 4;
inline constexpr std::uint32_t kRegDwordBigEndian = 5;
inline constexpr std::uint32_t kRegMultiSz = 7;
inline constexpr std::uint32_t kRegQword = 11;

// One value of a registry key. The data is what the registry stores: little-endian numbers,
// UTF-16LE text with its terminating zero.
struct RegistryValue {
  std::wstring name;  // empty for the key's default value
  std::uint32_t type = kRegNone;
  RegistryData data;

  bool operator==(const RegistryValue&) const = default;
};

RegistryValue MakeStringValue(std::wstring name, const std::wstring& text,
                              std::uint32_t type = kRegSz);
RegistryValue MakeStringValue(std::wstring name, std::u16string_view text,
                              std::uint32_t type = kRegSz);
RegistryValue MakeDwordValue(std::wstring name, std::uint32_t number);

enum class RegistryHive { kCurrentUser, kLocalMachine };

// Paths of registry keys as text: names with backslashes between them. Nothing here looks at a
// registry.

// The limits of the system.
inline constexpr std::size_t kMostKeyLevels = 512;
inline constexpr std::size_t kLongestKeyName = 255;
inline constexpr std::size_t kLongestValueName = 16383;

// The root as it is written in full, for example "HKEY_CURRENT_USER".
std::wstring RootName(RegistryHive hive);

// A key's path with its root in front, as a registry file names it.
std::wstring FullKeyPath(RegistryHive hive, const std::wstring& keyPath);

// The path of a subkey; the empty path is the hive itself.
std::wstring JoinKey(const std::wstring& keyPath, const std::wstring& subkey);

// The first name of a key path, taken off its front; empty at the end of the path. Backslashes
// without a name between them count as one.
std::wstring_view TakeKeyName(std::wstring_view& path);

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
