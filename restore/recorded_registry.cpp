#include "restore/recorded_registry.h"

#include "platform/read_reg_file.h"
#include "platform/registry_command.h"
#include "platform/registry_path.h"

namespace carrovan {
namespace {

std::vector<std::wstring> NamesOf(const std::vector<RegistryValue>& values) {
  std::vector<std::wstring> names;
  for (const RegistryValue& value : values) names.push_back(value.name);
  return names;
}

std::vector<std::wstring> NamesOf(const std::vector<RegValueChange>& values) {
  std::vector<std::wstring> names;
  for (const RegValueChange& change : values) names.push_back(change.value.name);
  return names;
}

struct NamedKey {
  RegistryHive hive;
  std::wstring path;
};

// A command whose end is noted for the keys that it changes.
class RecordedCommand : public RunningCommand {
 public:
  RecordedCommand(std::unique_ptr<RunningCommand> command, std::vector<NamedKey> keys,
                  ChangeRecorder& recorder)
      : command_(std::move(command)), keys_(std::move(keys)), recorder_(recorder) {}

  bool WaitForEnd() override {
    const bool succeeded = command_->WaitForEnd();
    for (const NamedKey& key : keys_) recorder_.KeyChanged(key.hive, key.path);
    return succeeded;
  }

 private:
  std::unique_ptr<RunningCommand> command_;
  std::vector<NamedKey> keys_;
  ChangeRecorder& recorder_;
};

SystemCode NoteKeys(const RegFile& file, ChangeRecorder& recorder, std::vector<NamedKey>& keys) {
  for (const RegKeyChange& change : file.keys) {
    std::vector<std::wstring> noted;
    const SystemCode code =
        change.remove ? recorder.KeyTreeChanges(change.hive, change.keyPath, noted)
                      : recorder.KeyChanges(change.hive, change.keyPath, NamesOf(change.values));
    if (code != kSystemOk) return code;
    if (!change.remove) noted.push_back(change.keyPath);
    for (std::wstring& path : noted) keys.push_back({change.hive, std::move(path)});
  }
  return kSystemOk;
}

}  // namespace

SystemCode RecordedRegistry::SetValues(RegistryHive hive, const std::wstring& keyPath,
                                       const std::vector<RegistryValue>& values) {
  const SystemCode noted = recorder_.KeyChanges(hive, keyPath, NamesOf(values));
  if (noted != kSystemOk) return noted;
  const SystemCode code = registry_.SetValues(hive, keyPath, values);
  recorder_.KeyChanged(hive, keyPath);
  return code;
}

SystemCode RecordedRegistry::CreateKey(RegistryHive hive, const std::wstring& keyPath) {
  if (const SystemCode code = recorder_.KeyChanges(hive, keyPath); code != kSystemOk) return code;
  const SystemCode code = registry_.CreateKey(hive, keyPath);
  recorder_.KeyChanged(hive, keyPath);
  return code;
}

SystemCode RecordedRegistry::DeleteValue(RegistryHive hive, const std::wstring& keyPath,
                                         const std::wstring& name) {
  if (const SystemCode code = recorder_.KeyChanges(hive, keyPath); code != kSystemOk) return code;
  const SystemCode code = registry_.DeleteValue(hive, keyPath, name);
  recorder_.KeyChanged(hive, keyPath);
  return code;
}

SystemCode RecordedRegistry::DeleteTree(RegistryHive hive, const std::wstring& keyPath) {
  // An empty path is refused there, and would be the whole hive here.
  if (keyPath.empty()) return registry_.DeleteTree(hive, keyPath);
  std::vector<std::wstring> noted;
  SystemCode code = recorder_.KeyTreeChanges(hive, keyPath, noted);
  if (code == kSystemOk) code = registry_.DeleteTree(hive, keyPath);
  for (const std::wstring& path : noted) recorder_.KeyChanged(hive, path);
  return code;
}

SystemCode RecordedRegistry::CopyTree(RegistryHive sourceHive, const std::wstring& sourcePath,
                                      RegistryHive targetHive, const std::wstring& targetPath) {
  std::vector<std::wstring> noted;
  SystemCode code = NoteCopy(sourceHive, sourcePath, targetHive, targetPath, noted);
  if (code == kSystemOk) {
    code = registry_.CopyTree(sourceHive, sourcePath, targetHive, targetPath);
  }
  for (const std::wstring& path : noted) recorder_.KeyChanged(targetHive, path);
  return code;
}

SystemCode RecordedRegistry::NoteCopy(RegistryHive sourceHive, const std::wstring& sourcePath,
                                      RegistryHive targetHive, const std::wstring& targetPath,
                                      std::vector<std::wstring>& noted) {
  const auto subkeys = reader_.SubkeyNames(sourceHive, sourcePath);
  const auto values = reader_.Values(sourceHive, sourcePath);
  if (!subkeys || !values) return kSystemOk;
  const SystemCode parent = recorder_.KeyChanges(targetHive, targetPath, NamesOf(*values));
  if (parent != kSystemOk) return parent;
  noted.push_back(targetPath);
  for (const std::wstring& subkey : *subkeys) {
    const SystemCode code = NoteCopy(sourceHive, JoinKey(sourcePath, subkey), targetHive,
                                     JoinKey(targetPath, subkey), noted);
    if (code != kSystemOk) return code;
  }
  return kSystemOk;
}

std::unique_ptr<RunningCommand> RecordedInterpreter::Start(const std::wstring& parameters) {
  const auto path = ImportedFile(parameters);
  const auto file = path ? ReadRegFile(files_, *path) : std::nullopt;
  std::vector<NamedKey> keys;
  if (file && NoteKeys(*file, recorder_, keys) != kSystemOk) return nullptr;
  auto command = interpreter_.Start(parameters);
  if (!command) return nullptr;
  return std::make_unique<RecordedCommand>(std::move(command), std::move(keys), recorder_);
}

}  // namespace carrovan
