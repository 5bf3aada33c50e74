#pragma once

#include "platform/reg_file_parser.h"
#include "platform/registry_editor.h"
#include "platform/registry_key.h"

namespace carrovan {

// Does what a registry file says, as the system's tool does: key after key, in the file's order.

// Only the changes of one hive, whose root the key is.
void ApplyRegFile(const RegFile& file, RegistryHive hive, RegistryKey& root);

// Goes on after a failure; the code is that of the first one. What is to be removed and is not
// there is no failure.
[[nodiscard]] SystemCode ApplyRegFile(const RegFile& file, RegistryEditor& registry);

// Whether a change of the file is one of this hive.
bool Concerns(const RegFile& file, RegistryHive hive);

}  // namespace carrovan
