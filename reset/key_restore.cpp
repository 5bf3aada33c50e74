#include "reset/key_restore.h"

namespace carrovan {

KeyRestore RestoreKey(const std::wstring& defaultKey, const std::wstring& liveKey,
                      RegistryEditor& registry) {
  KeyRestore restore;
  restore.deleted = registry.DeleteTree(RegistryHive::kCurrentUser, liveKey);
  restore.copied = registry.CopyTree(RegistryHive::kLocalMachine, defaultKey,
                                     RegistryHive::kCurrentUser, liveKey);
  return restore;
}

}  // namespace carrovan
