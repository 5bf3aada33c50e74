#pragma once

#include <array>
#include <map>
#include <memory>
#include <string>

#include "platform/registry.h"
#include "registry_text/registry_key.h"

namespace carrovan {

// What was done to one key of a registry that itself stays as it is.
struct OverlayKey {
  using Keys = std::map<std::u16string, std::unique_ptr<OverlayKey>>;  // by folded name

  bool isRemoved = false;
  bool showsMachine = false;            // the machine's key of this path shows through
  std::wstring name;                    // as it was made; empty for a key that shows through
  std::unique_ptr<RegistryKey> values;  // all that it has; null: the machine's
  Keys below;
};

// The registry of a machine that can be changed without the machine noticing: reads fall through to
// it, keys and values that were written are kept here. A key that the user may not change is asked
// of the machine.
class OverlayRegistry : public RegistryEditor {
 public:
  // The machine's registry outlives it.
  explicit OverlayRegistry(const RegistryEditor& machine);

  const OverlayKey& Root(RegistryHive hive) const { return roots_[static_cast<std::size_t>(hive)]; }

  bool CanOpenKey(RegistryHive hive, const std::wstring& keyPath) const override;
  std::optional<std::vector<std::wstring>> SubkeyNames(RegistryHive hive,
                                                       const std::wstring& keyPath) const override;
  std::optional<std::vector<RegistryValue>> Values(RegistryHive hive,
                                                   const std::wstring& keyPath) const override;
  SystemCode TryOpen(RegistryHive hive, const std::wstring& keyPath) const override;
  std::optional<std::uint32_t> ValueType(RegistryHive hive, const std::wstring& keyPath,
                                         const std::wstring& name) const override;
  SystemCode SetValues(RegistryHive hive, const std::wstring& keyPath,
                       const std::vector<RegistryValue>& values) override;
  SystemCode CreateKey(RegistryHive hive, const std::wstring& keyPath) override;
  SystemCode DeleteValue(RegistryHive hive, const std::wstring& keyPath,
                         const std::wstring& name) override;
  SystemCode DeleteTree(RegistryHive hive, const std::wstring& keyPath) override;
  SystemCode CopyTree(RegistryHive sourceHive, const std::wstring& sourcePath,
                      RegistryHive targetHive, const std::wstring& targetPath) override;
  SystemCode Flush(RegistryHive) override { return kSystemOk; }

 private:
  // A key as it is seen: the overlay's node, the machine's key, both or neither.
  struct Seen {
    const OverlayKey* node = nullptr;
    bool showsMachine = true;
  };

  Seen Look(RegistryHive hive, const std::wstring& keyPath) const;
  OverlayKey& Make(RegistryHive hive, const std::wstring& keyPath);
  RegistryKey& ValuesToChange(RegistryHive hive, const std::wstring& keyPath);
  void ReadTree(RegistryHive hive, const std::wstring& keyPath, RegistryKey& copy) const;
  void WriteTree(RegistryHive hive, const std::wstring& keyPath, const RegistryKey& key);

  const RegistryEditor& machine_;
  std::array<OverlayKey, 2> roots_;  // by RegistryHive
};

}  // namespace carrovan
