#pragma once

#include <string>

#include "platform/registry_editor.h"

namespace carrovan {

// How a key was restored, each step as kSystemOk or the system's number.
struct KeyRestore {
  SystemCode deleted = kSystemOk;  // kFileNotFound: the user had no such key
  SystemCode copied = kSystemOk;   // kFileNotFound: the product has no defaults for the key
};

// Puts the product's factory defaults in place of the user's settings: deletes the live key with
// all below it, then copies the default key over it. Without a default key the live key stays
// deleted and the product starts from its built-in defaults. Nothing is told to the user.
[[nodiscard]] KeyRestore RestoreKey(const std::wstring& defaultKey, const std::wstring& liveKey,
                                    RegistryEditor& registry);

}  // namespace carrovan
