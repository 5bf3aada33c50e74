#include "reset/key_restore.h"

namespace carrovan {

SystemCode RestoreKey(const std::wstring& defaultKey, const std::wstring& liveKey,
                      RegistryEditor& registry) {
  // A live key that is missing is as good as deleted.
  static_cast<void>(registry.DeleteTree(RegistryHive::kCurrentUser, liveKey));
  return registry.CopyTree(RegistryHive::kLocalMachine, defaultKey, RegistryHive::kCurrentUser,
                           liveKey);
}

}  // namespace carrovan
