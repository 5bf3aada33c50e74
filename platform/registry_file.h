#pragma once

#include <optional>
#include <string>

#include "platform/file_system.h"
#include "platform/registry.h"
#include "registry_text/registry_file_parser.h"
#include "registry_text/registry_key.h"

namespace carrovan {

// What the registry tool makes of a file; nothing for one that it cannot read or refuses.
std::optional<RegistryFile> ReadRegistryFile(const FileReader& files, const std::wstring& path);

// The same key by key. False when there is nothing.
bool ReadRegistryKeys(const FileReader& files, const std::wstring& path,
                      const TakeRegistryKey& take);

// Does what a registry file says, as the system's tool does: key after key, in the file's order.

// Only the changes of one hive, whose root the key is.
void ApplyRegistryFile(const RegistryFile& file, RegistryHive hive, RegistryKey& root);

// Only one key of it.
void ApplyRegistryKey(const RegistryKeyChange& change, RegistryKey& root);

// Goes on after a failure; the code is that of the first one. What is to be removed and is not
// there is no failure.
[[nodiscard]] SystemCode ApplyRegistryFile(const RegistryFile& file, RegistryEditor& registry);
[[nodiscard]] SystemCode ApplyRegistryKey(const RegistryKeyChange& change,
                                          RegistryEditor& registry);

// Whether a change of the file is one of this hive.
bool Concerns(const RegistryFile& file, RegistryHive hive);

}  // namespace carrovan
