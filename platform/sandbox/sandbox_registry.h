#pragma once

#include <array>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/registry.h"
#include "platform/sandbox/sandbox_hive.h"
#include "registry_text/registry_file_parser.h"
#include "registry_text/registry_key.h"

namespace carrovan {

// The registry of a machine in a folder: one registry file per hive, "HKEY_CURRENT_USER.reg" and
// "HKEY_LOCAL_MACHINE.reg", which hold what was changed here once this is destroyed.
class SandboxRegistry : public RegistryEditor {
 public:
  explicit SandboxRegistry(const std::filesystem::path& folder)
      : hives_{{{folder, RegistryHive::kCurrentUser}, {folder, RegistryHive::kLocalMachine}}} {}

  // Reads both hives. Nothing on success, otherwise one line that names the file and what is wrong
  // with it. Until then both hives are empty.
  [[nodiscard]] std::optional<std::wstring> Load();

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
  SystemCode Flush(RegistryHive hive) override;

  // Null when the key is missing.
  const RegistryKey* Find(RegistryHive hive, std::wstring_view keyPath) const;

  // Any change of a hive, for whoever fills the machine: its whole file is written. False, with
  // file and hive as they were, when that fails.
  [[nodiscard]] bool Change(RegistryHive hive, const std::function<void(RegistryKey&)>& change);

  // Does what a registry file says. False when a hive that it concerns could not be changed.
  [[nodiscard]] bool Merge(const RegistryFile& file);

 private:
  SandboxHive& Of(RegistryHive hive) { return hives_[static_cast<std::size_t>(hive)]; }

  // Changes a key that must be there.
  [[nodiscard]] SystemCode ChangeKey(RegistryKeyChange change);
  [[nodiscard]] SystemCode Apply(RegistryKeyChange change);

  std::array<SandboxHive, 2> hives_;  // by RegistryHive
};

}  // namespace carrovan
