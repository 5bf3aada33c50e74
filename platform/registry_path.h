#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/registry.h"

namespace carrovan {

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

}  // namespace carrovan
