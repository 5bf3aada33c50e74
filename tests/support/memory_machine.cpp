#include "tests/support/memory_machine.h"

#include "platform/file_operations.h"
#include "platform/registry_file.h"
#include "platform/registry_tool.h"
#include "registry_text/registry_file_writer.h"
#include "text/path_text.h"
#include "text/profile_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr char kArchiveMark[] = "memory archive\n";

struct StoredItem {
  std::wstring name;
  std::string bytes;
};

std::wstring TextOf(const std::string& bytes) {
  return DecodeText(std::vector<std::uint8_t>(bytes.begin(), bytes.end())).text;
}

// Each item is its name's length, its size and a line end, then both.
std::string Packed(const std::vector<StoredItem>& items) {
  std::string packed = kArchiveMark;
  for (const StoredItem& item : items) {
    const std::string name = ToUtf8(item.name);
    packed += std::to_string(name.size()) + " " + std::to_string(item.bytes.size()) + "\n";
    packed += name + item.bytes;
  }
  return packed;
}

std::vector<StoredItem> Unpacked(const std::string& packed) {
  std::vector<StoredItem> items;
  std::size_t at = std::string(kArchiveMark).size();
  while (at < packed.size()) {
    const std::size_t lineEnd = packed.find('\n', at);
    const std::size_t nameSize = std::stoul(packed.substr(at));
    const std::size_t size = std::stoul(packed.substr(packed.find(' ', at) + 1));
    at = lineEnd + 1;
    items.push_back({FromUtf8(packed.substr(at, nameSize)), packed.substr(at + nameSize, size)});
    at += nameSize + size;
  }
  return items;
}

class Writer : public ArchiveWriter {
 public:
  Writer(FileSystem& files, std::wstring path, MemoryArchives::Keep keep)
      : files_(files), path_(std::move(path)), keep_(std::move(keep)) {}

  ArchiveResult Add(const std::wstring& entryName, const std::wstring& sourcePath) override {
    if (RefusalOfStoredName(entryName)) return ArchiveResult::kNameRefused;
    StoredItem item{entryName, {}};
    if (files_.ReadBytes(sourcePath, item.bytes) != kSystemOk) {
      return ArchiveResult::kSourceUnreadable;
    }
    items_.push_back(std::move(item));
    return ArchiveResult::kDone;
  }

  ArchiveResult Close() override {
    const std::string packed = Packed(items_);
    const SystemCode code = keep_ ? keep_(path_, packed) : files_.WriteBytes(path_, packed);
    return code == kSystemOk ? ArchiveResult::kDone : ArchiveResult::kTargetNotWritable;
  }

 private:
  FileSystem& files_;
  std::wstring path_;
  MemoryArchives::Keep keep_;
  std::vector<StoredItem> items_;
};

class Reader : public ArchiveReader {
 public:
  Reader(FileSystem& files, std::vector<StoredItem> items)
      : files_(files), items_(std::move(items)) {}

  std::optional<ArchiveItem> Item(std::size_t index) const override {
    if (index >= items_.size()) return std::nullopt;
    const std::string& bytes = items_[index].bytes;
    return ArchiveItem{items_[index].name, bytes.size(), bytes.size(), ImageOfBytes(bytes).crc32};
  }

  ArchiveResult Extract(std::size_t index, const std::wstring& targetPath) override {
    if (RefusalOfStoredName(items_[index].name)) return ArchiveResult::kNameRefused;
    MakeFolders(RemoveFileSpec(targetPath));
    const bool written = files_.WriteBytes(targetPath, items_[index].bytes) == kSystemOk;
    return written ? ArchiveResult::kDone : ArchiveResult::kTargetNotWritable;
  }

 private:
  void MakeFolders(const std::wstring& folder) {
    if (files_.IsFolder(folder)) return;
    if (const std::wstring parent = RemoveFileSpec(folder); parent != folder) MakeFolders(parent);
    static_cast<void>(files_.CreateFolder(folder));
  }

  FileSystem& files_;
  std::vector<StoredItem> items_;
};

}  // namespace

std::wstring MemoryRegistry::Text(RegistryHive hive, const std::wstring& keyPath) const {
  const RegistryKey* key = Root(hive).Find(keyPath);
  return key == nullptr ? L"" : WriteRegistryFile(hive, keyPath, *key, RegistryFileForm::kLossless);
}

bool MemoryRegistry::CanOpenKey(RegistryHive hive, const std::wstring& keyPath) const {
  return Root(hive).Find(keyPath) != nullptr;
}

std::optional<std::vector<std::wstring>> MemoryRegistry::SubkeyNames(
    RegistryHive hive, const std::wstring& keyPath) const {
  const RegistryKey* key = Root(hive).Find(keyPath);
  if (key == nullptr) return std::nullopt;
  std::vector<std::wstring> names;
  for (const auto& [name, subkey] : key->AllSubkeys()) names.push_back(name);
  return names;
}

std::optional<std::vector<RegistryValue>> MemoryRegistry::Values(
    RegistryHive hive, const std::wstring& keyPath) const {
  const RegistryKey* key = Root(hive).Find(keyPath);
  if (key == nullptr) return std::nullopt;
  std::vector<RegistryValue> values;
  for (const RegistryValue* value : key->AllValues()) values.push_back(*value);
  return values;
}

SystemCode MemoryRegistry::TryOpen(RegistryHive hive, const std::wstring& keyPath) const {
  return CanOpenKey(hive, keyPath) ? kSystemOk : kFileNotFound;
}

std::optional<std::uint32_t> MemoryRegistry::ValueType(RegistryHive hive,
                                                       const std::wstring& keyPath,
                                                       const std::wstring& name) const {
  const RegistryKey* const key = Root(hive).Find(keyPath);
  const RegistryValue* const value = key == nullptr ? nullptr : key->Value(name);
  return value == nullptr ? std::nullopt : std::optional(value->type);
}

SystemCode MemoryRegistry::SetValues(RegistryHive hive, const std::wstring& keyPath,
                                     const std::vector<RegistryValue>& values) {
  if (!CanOpenKey(hive, keyPath)) return kFileNotFound;
  for (const RegistryValue& value : values) Root(hive).Make(keyPath).SetValue(value);
  return kSystemOk;
}

SystemCode MemoryRegistry::CreateKey(RegistryHive hive, const std::wstring& keyPath) {
  Root(hive).Make(keyPath);
  return kSystemOk;
}

SystemCode MemoryRegistry::DeleteValue(RegistryHive hive, const std::wstring& keyPath,
                                       const std::wstring& name) {
  if (!ValueType(hive, keyPath, name)) return kFileNotFound;
  Root(hive).Make(keyPath).RemoveValue(name);
  return kSystemOk;
}

SystemCode MemoryRegistry::DeleteTree(RegistryHive hive, const std::wstring& keyPath) {
  if (keyPath.empty()) return kInvalidName;
  return Root(hive).Remove(keyPath) ? kSystemOk : kFileNotFound;
}

SystemCode MemoryRegistry::CopyTree(RegistryHive sourceHive, const std::wstring& sourcePath,
                                    RegistryHive targetHive, const std::wstring& targetPath) {
  const RegistryKey* const source = Root(sourceHive).Find(sourcePath);
  if (source == nullptr) return kFileNotFound;
  RegistryKey copy;
  copy.CopyFrom(*source);
  Root(targetHive).Make(targetPath).CopyFrom(copy);
  return kSystemOk;
}

std::wstring MemoryProfiles::ReadValue(const std::wstring& section, const std::wstring& key,
                                       const std::wstring& filePath) const {
  std::string bytes;
  if (files_.ReadBytes(filePath, bytes) != kSystemOk) return {};
  return ProfileValue(TextOf(bytes), section, key);
}

bool MemoryProfiles::WriteValue(const std::wstring& section, const std::wstring& key,
                                const std::wstring& value, const std::wstring& filePath) {
  std::string bytes;
  const SystemCode code = files_.ReadBytes(filePath, bytes);
  if (code != kSystemOk && code != kFileNotFound) return false;
  const std::wstring text = WithProfileValue(TextOf(bytes), section, key, value);
  return files_.WriteBytes(filePath, ToUtf8(text)) == kSystemOk;
}

std::unique_ptr<ArchiveWriter> MemoryArchives::Create(const std::wstring& archivePath,
                                                      ArchivePurpose purpose) {
  const bool isKept = purpose == ArchivePurpose::kKeep;
  return std::make_unique<Writer>(files_, archivePath, isKept ? keep_ : Keep());
}

std::unique_ptr<ArchiveReader> MemoryArchives::Open(const std::wstring& archivePath) {
  std::string packed;
  if (files_.ReadBytes(archivePath, packed) != kSystemOk) return nullptr;
  if (!packed.starts_with(kArchiveMark)) return nullptr;
  return std::make_unique<Reader>(files_, Unpacked(packed));
}

bool MemoryRegistryTool::Export(const std::wstring& fullPath, const std::wstring& file) {
  const std::wstring path = fullPath.substr(fullPath.find(L'\\') + 1);
  const RegistryKey* const key = registry_.Root(RegistryHive::kCurrentUser).Find(path);
  if (key == nullptr) return false;
  const auto bytes = EncodeText(
      {WriteRegistryFile(RegistryHive::kCurrentUser, path, *key, RegistryFileForm::kExport), true});
  return files_.WriteBytes(file, std::string(bytes.begin(), bytes.end())) == kSystemOk;
}

bool MemoryRegistryTool::Import(const std::wstring& file) {
  const auto parsed = ReadRegistryFile(files_, file);
  if (!parsed) return false;
  for (const RegistryHive hive : {RegistryHive::kCurrentUser, RegistryHive::kLocalMachine}) {
    ApplyRegistryFile(*parsed, hive, registry_.Root(hive));
  }
  return true;
}

}  // namespace carrovan
