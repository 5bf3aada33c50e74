#pragma once

#include "platform/command_interpreter.h"
#include "platform/registry_editor.h"
#include "restore/change_recorder.h"

namespace carrovan {

// A registry that has each change noted before it is made.
class RecordedRegistry : public RegistryEditor {
 public:
  RecordedRegistry(RegistryEditor& registry, const RegistryReader& reader, ChangeRecorder& recorder)
      : registry_(registry), reader_(reader), recorder_(recorder) {}

  SystemCode TryOpen(RegistryHive hive, const std::wstring& keyPath) const override {
    return registry_.TryOpen(hive, keyPath);
  }
  std::optional<std::uint32_t> ValueType(RegistryHive hive, const std::wstring& keyPath,
                                         const std::wstring& name) const override {
    return registry_.ValueType(hive, keyPath, name);
  }
  SystemCode SetValues(RegistryHive hive, const std::wstring& keyPath,
                       const std::vector<RegistryValue>& values) override;
  SystemCode CreateKey(RegistryHive hive, const std::wstring& keyPath) override;
  SystemCode DeleteValue(RegistryHive hive, const std::wstring& keyPath,
                         const std::wstring& name) override;
  SystemCode DeleteTree(RegistryHive hive, const std::wstring& keyPath) override;
  SystemCode CopyTree(RegistryHive sourceHive, const std::wstring& sourcePath,
                      RegistryHive targetHive, const std::wstring& targetPath) override;

 private:
  // The keys that a copy of one tree over another changes, both given by their top keys.
  [[nodiscard]] SystemCode NoteCopy(RegistryHive sourceHive, const std::wstring& sourcePath,
                                    RegistryHive targetHive, const std::wstring& targetPath,
                                    std::vector<std::wstring>& noted);

  RegistryEditor& registry_;
  const RegistryReader& reader_;
  ChangeRecorder& recorder_;
};

// A command interpreter that has the keys noted which a registry file names before the registry
// tool imports it.
class RecordedInterpreter : public CommandInterpreter {
 public:
  RecordedInterpreter(CommandInterpreter& interpreter, const FileReader& files,
                      ChangeRecorder& recorder)
      : interpreter_(interpreter), files_(files), recorder_(recorder) {}

  // Null also when the keys could not be noted.
  std::unique_ptr<RunningCommand> Start(const std::wstring& parameters) override;

 private:
  CommandInterpreter& interpreter_;
  const FileReader& files_;
  ChangeRecorder& recorder_;
};

}  // namespace carrovan
