#pragma once

#include <string>

#include "platform/registry_editor.h"

namespace carrovan {

// Puts the product's factory defaults in place of the user's settings: deletes the live key with
// all below it, then copies the default key over it. Without a default key the live key stays
// deleted and the product starts from its built-in defaults. kSystemOk, or the number of the step
// that failed; nothing is told to the user.
[[nodiscard]] SystemCode RestoreKey(const std::wstring& defaultKey, const std::wstring& liveKey,
                                    RegistryEditor& registry);

}  // namespace carrovan
