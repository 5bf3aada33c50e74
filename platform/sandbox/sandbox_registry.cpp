#include "platform/sandbox/sandbox_registry.h"

#include <algorithm>
#include <utility>

#include "platform/posix/host_access.h"
#include "platform/posix/host_file_system.h"
#include "platform/registry_file.h"
#include "registry_text/registry_file_writer.h"
#include "support/files/part_file.h"
#include "text/text.h"

namespace carrovan {
namespace {

std::size_t IndexOf(RegistryHive hive) { return static_cast<std::size_t>(hive); }

constexpr RegistryHive kHives[] = {RegistryHive::kCurrentUser, RegistryHive::kLocalMachine};

// What keeps a text from being the whole content of one hive.
std::optional<std::wstring> ProblemOf(const std::optional<RegistryFile>& file, RegistryHive hive) {
  if (!file) return L"not a registry file";
  if (!file->problems.empty()) {
    const RegistryFileProblem& first = file->problems.front();
    return L"line " + std::to_wstring(first.line) + L": " + first.text;
  }
  for (const RegistryHive other : kHives) {
    if (other != hive && Concerns(*file, other)) return L"keys of another root";
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::wstring> SandboxRegistry::Load() {
  for (const RegistryHive hive : kHives) {
    if (auto problem = LoadHive(hive, hives_[IndexOf(hive)])) return problem;
  }
  return std::nullopt;
}

bool SandboxRegistry::CanOpenKey(RegistryHive hive, const std::wstring& keyPath) const {
  return Find(hive, keyPath) != nullptr;
}

std::optional<std::vector<std::wstring>> SandboxRegistry::SubkeyNames(
    RegistryHive hive, const std::wstring& keyPath) const {
  const RegistryKey* key = Find(hive, keyPath);
  if (key == nullptr) return std::nullopt;
  std::vector<std::wstring> names;
  for (const auto& [name, subkey] : key->AllSubkeys()) names.push_back(name);
  return names;
}

std::optional<std::vector<RegistryValue>> SandboxRegistry::Values(
    RegistryHive hive, const std::wstring& keyPath) const {
  const RegistryKey* key = Find(hive, keyPath);
  if (key == nullptr) return std::nullopt;
  std::vector<RegistryValue> values;
  for (const RegistryValue* value : key->AllValues()) values.push_back(*value);
  return values;
}

const RegistryKey* SandboxRegistry::Find(RegistryHive hive, std::wstring_view keyPath) const {
  return hives_[IndexOf(hive)].Find(keyPath);
}

bool SandboxRegistry::Change(RegistryHive hive, const std::function<void(RegistryKey&)>& change) {
  RegistryKey root;
  if (LoadHive(hive, root)) return false;
  change(root);
  const std::wstring text = WriteRegistryFile(hive, L"", root, RegistryFileForm::kLossless);
  if (MakeFolders(folder_) != FileStatus::kDone) return false;
  if (ReplaceHostFile(FileOf(hive), EncodeText({text, true})) != FileStatus::kDone) return false;
  hives_[IndexOf(hive)] = std::move(root);
  return true;
}

bool SandboxRegistry::Merge(const RegistryFile& file) {
  bool merged = true;
  for (const RegistryHive hive : kHives) {
    if (!Concerns(file, hive)) continue;
    merged =
        Change(hive, [&](RegistryKey& root) { ApplyRegistryFile(file, hive, root); }) && merged;
  }
  return merged;
}

SystemCode SandboxRegistry::TryOpen(RegistryHive hive, const std::wstring& keyPath) const {
  return Find(hive, keyPath) != nullptr ? kSystemOk : kFileNotFound;
}

std::optional<std::uint32_t> SandboxRegistry::ValueType(RegistryHive hive,
                                                        const std::wstring& keyPath,
                                                        const std::wstring& name) const {
  const RegistryKey* const key = Find(hive, keyPath);
  const RegistryValue* const value = key == nullptr ? nullptr : key->Value(name);
  return value == nullptr ? std::nullopt : std::optional(value->type);
}

SystemCode SandboxRegistry::SetValues(RegistryHive hive, const std::wstring& keyPath,
                                      const std::vector<RegistryValue>& values) {
  return ChangeKey(hive, keyPath, [&](RegistryKey& root) {
    RegistryKey& key = root.Make(keyPath);
    for (const RegistryValue& value : values) key.SetValue(value);
  });
}

SystemCode SandboxRegistry::CreateKey(RegistryHive hive, const std::wstring& keyPath) {
  if (Find(hive, keyPath) != nullptr) return kSystemOk;
  return Change(hive, [&](RegistryKey& root) { root.Make(keyPath); }) ? kSystemOk : kAccessDenied;
}

SystemCode SandboxRegistry::DeleteValue(RegistryHive hive, const std::wstring& keyPath,
                                        const std::wstring& name) {
  if (!ValueType(hive, keyPath, name)) return kFileNotFound;
  return ChangeKey(hive, keyPath, [&](RegistryKey& root) { root.Make(keyPath).RemoveValue(name); });
}

SystemCode SandboxRegistry::DeleteTree(RegistryHive hive, const std::wstring& keyPath) {
  if (keyPath.empty()) return kInvalidName;
  return ChangeKey(hive, keyPath, [&](RegistryKey& root) { root.Remove(keyPath); });
}

SystemCode SandboxRegistry::CopyTree(RegistryHive sourceHive, const std::wstring& sourcePath,
                                     RegistryHive targetHive, const std::wstring& targetPath) {
  const RegistryKey* const source = Find(sourceHive, sourcePath);
  if (source == nullptr) return kFileNotFound;
  RegistryKey copy;  // the target may lie below the source
  copy.CopyFrom(*source);
  const bool copied =
      Change(targetHive, [&](RegistryKey& root) { root.Make(targetPath).CopyFrom(copy); });
  return copied ? kSystemOk : kAccessDenied;
}

SystemCode SandboxRegistry::ChangeKey(RegistryHive hive, const std::wstring& keyPath,
                                      const std::function<void(RegistryKey&)>& change) {
  if (Find(hive, keyPath) == nullptr) return kFileNotFound;
  return Change(hive, change) ? kSystemOk : kAccessDenied;
}

// The file's content was flushed before it took its name.
SystemCode SandboxRegistry::Flush(RegistryHive /*hive*/) {
  return FlushPath(folder_) == FileStatus::kDone ? kSystemOk : kAccessDenied;
}

std::filesystem::path SandboxRegistry::FileOf(RegistryHive hive) const {
  return folder_ / HostPathFromText(RootName(hive) + L".reg");
}

std::optional<std::wstring> SandboxRegistry::LoadHive(RegistryHive hive, RegistryKey& root) const {
  std::vector<std::uint8_t> content;
  const FileStatus status = ReadHostFile(FileOf(hive), content);
  if (status == FileStatus::kMissing) return std::nullopt;
  const std::wstring name = RootName(hive) + L".reg: ";
  if (status != FileStatus::kDone) return name + L"the file cannot be read";
  const auto file = ParseRegistryFile(DecodeText(content).text);
  if (auto problem = ProblemOf(file, hive)) return name + *problem;
  ApplyRegistryFile(*file, hive, root);
  return std::nullopt;
}

}  // namespace carrovan
