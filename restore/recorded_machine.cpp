#include "restore/recorded_machine.h"

#include <utility>

#include "platform/registry_file.h"
#include "platform/registry_tool.h"
#include "registry_text/registry_key.h"
#include "restore/change_recorder.h"
#include "text/path_text.h"

namespace carrovan {
namespace {

ArchiveResult ResultOf(SystemCode code) {
  return code == kSystemDiskFull ? ArchiveResult::kDiskFull : ArchiveResult::kTargetNotWritable;
}

class Writer : public ArchiveWriter {
 public:
  Writer(std::unique_ptr<ArchiveWriter> writer, std::wstring path, ChangeRecorder& recorder)
      : writer_(std::move(writer)), path_(std::move(path)), recorder_(recorder) {}

  void Expect(const std::wstring& sourcePath) override { writer_->Expect(sourcePath); }
  ArchiveResult Add(const std::wstring& entryName, const std::wstring& sourcePath) override {
    return writer_->Add(entryName, sourcePath);
  }
  ArchiveResult Close() override {
    return MakeRecorded(
        recorder_, path_, [&] { return writer_->Close(); }, ResultOf);
  }

 private:
  std::unique_ptr<ArchiveWriter> writer_;
  std::wstring path_;
  ChangeRecorder& recorder_;
};

class Reader : public ArchiveReader {
 public:
  Reader(std::unique_ptr<ArchiveReader> reader, ChangeRecorder& recorder)
      : reader_(std::move(reader)), recorder_(recorder) {}

  std::optional<ArchiveItem> Item(std::size_t index) const override { return reader_->Item(index); }
  void Expect(std::size_t index) override { reader_->Expect(index); }
  ArchiveResult Extract(std::size_t index, const std::wstring& targetPath) override {
    return MakeRecorded(
        recorder_, targetPath, [&] { return reader_->Extract(index, targetPath); }, ResultOf,
        ImageOf(index));
  }

 private:
  std::optional<FileImage> ImageOf(std::size_t index) const {
    const auto item = reader_->Item(index);
    if (!item || !item->crc32 || EndsInSeparator(item->name)) return std::nullopt;
    return FileImage{FileKind::kFile, item->sizeBytes, *item->crc32};
  }

  std::unique_ptr<ArchiveReader> reader_;
  ChangeRecorder& recorder_;
};

}  // namespace

std::unique_ptr<ArchiveWriter> RecordedArchives::Create(const std::wstring& archivePath,
                                                        ArchivePurpose purpose) {
  auto writer = archives_.Create(archivePath, purpose);
  if (!writer) return nullptr;
  return std::make_unique<Writer>(std::move(writer), archivePath, recorder_);
}

std::unique_ptr<ArchiveReader> RecordedArchives::Open(const std::wstring& archivePath) {
  auto reader = archives_.Open(archivePath);
  return reader ? std::make_unique<Reader>(std::move(reader), recorder_) : nullptr;
}

namespace {

// The second note is made when the file has taken its place, or has been given up.
class RecordedReplacement : public FileReplacement {
 public:
  RecordedReplacement(ChangeRecorder& recorder, std::wstring path,
                      std::unique_ptr<FileReplacement> file)
      : recorder_(recorder), path_(std::move(path)), file_(std::move(file)) {}
  ~RecordedReplacement() override {
    file_.reset();
    recorder_.FileChanged(path_, isComplete_ ? std::optional(content_.Image()) : std::nullopt);
  }
  RecordedReplacement(const RecordedReplacement&) = delete;
  RecordedReplacement& operator=(const RecordedReplacement&) = delete;

  SystemCode Append(std::string_view part) override {
    content_.Add(part);
    return file_->Append(part);
  }
  SystemCode Complete() override {
    const SystemCode code = file_->Complete();
    isComplete_ = code == kSystemOk;
    return code;
  }

 private:
  ChangeRecorder& recorder_;
  std::wstring path_;
  ContentSum content_;
  bool isComplete_ = false;
  std::unique_ptr<FileReplacement> file_;
};

// The second note is made when the file is closed.
class RecordedAppender : public FileAppender {
 public:
  RecordedAppender(ChangeRecorder& recorder, std::wstring path, std::unique_ptr<FileAppender> file)
      : recorder_(recorder), path_(std::move(path)), file_(std::move(file)) {}
  ~RecordedAppender() override {
    file_.reset();
    recorder_.FileChanged(path_);
  }
  RecordedAppender(const RecordedAppender&) = delete;
  RecordedAppender& operator=(const RecordedAppender&) = delete;

  SystemCode Append(std::string_view bytes) override { return file_->Append(bytes); }
  SystemCode FlushToDisk() override { return file_->FlushToDisk(); }

 private:
  ChangeRecorder& recorder_;
  std::wstring path_;
  std::unique_ptr<FileAppender> file_;
};

}  // namespace

SystemCode RecordedFiles::CreateFolder(const std::wstring& path) {
  // Making a folder that is there changes nothing.
  if (Exists(path) || recorder_.IsScratch(path)) return ForwardingFiles::CreateFolder(path);
  const SystemCode code = recorder_.FolderMade(path);
  return code == kSystemOk ? ForwardingFiles::CreateFolder(path) : code;
}

SystemCode RecordedFiles::CreateEmptyFile(const std::wstring& path) {
  return MakeRecorded(
      recorder_, path, [&] { return ForwardingFiles::CreateEmptyFile(path); }, ImageOfBytes({}));
}

SystemCode RecordedFiles::RemoveFile(const std::wstring& path) {
  if (recorder_.IsScratch(path)) return ForwardingFiles::RemoveFile(path);
  // What was announced has been looked at.
  if (!recorder_.IsOpenFile(path) && IsLink(path)) return recorder_.TakeLink(path);
  const SystemCode code = recorder_.TakeFile(path);
  recorder_.FileChanged(path, code == kSystemOk ? std::optional(FileImage()) : std::nullopt);
  return code;
}

SystemCode RecordedFiles::RemoveFolder(const std::wstring& path) {
  if (IsLink(path) && !recorder_.IsScratch(path)) return recorder_.TakeLink(path);
  return MakeRecorded(
      recorder_, path, [&] { return ForwardingFiles::RemoveFolder(path); }, FileImage());
}

SystemCode RecordedFiles::WriteBytes(const std::wstring& path, std::string_view bytes) {
  return MakeRecorded(
      recorder_, path, [&] { return ForwardingFiles::WriteBytes(path, bytes); },
      ImageOfBytes(bytes));
}

SystemCode RecordedFiles::BeginReplacement(const std::wstring& path, std::uint64_t expectedBytes,
                                           std::unique_ptr<FileReplacement>& replacement) {
  if (recorder_.IsScratch(path)) {
    return ForwardingFiles::BeginReplacement(path, expectedBytes, replacement);
  }
  if (const SystemCode code = recorder_.FileChanges(path); code != kSystemOk) return code;
  std::unique_ptr<FileReplacement> file;
  const SystemCode code = ForwardingFiles::BeginReplacement(path, expectedBytes, file);
  if (code != kSystemOk) {
    recorder_.FileChanged(path);
    return code;
  }
  replacement = std::make_unique<RecordedReplacement>(recorder_, path, std::move(file));
  return kSystemOk;
}

SystemCode RecordedFiles::OpenToAppend(const std::wstring& path,
                                       std::unique_ptr<FileAppender>& appender) {
  if (recorder_.IsScratch(path)) return ForwardingFiles::OpenToAppend(path, appender);
  if (const SystemCode code = recorder_.FileChanges(path); code != kSystemOk) return code;
  std::unique_ptr<FileAppender> file;
  const SystemCode code = ForwardingFiles::OpenToAppend(path, file);
  if (code != kSystemOk) {
    recorder_.FileChanged(path);
    return code;
  }
  appender = std::make_unique<RecordedAppender>(recorder_, path, std::move(file));
  return kSystemOk;
}

SystemCode RecordedFiles::HoldFile(const std::wstring& path, FileHold hold) {
  return MakeRecorded(recorder_, path, [&] { return ForwardingFiles::HoldFile(path, hold); });
}

SystemCode RecordedFiles::CopyOver(const std::wstring& source, const std::wstring& target) {
  return MakeRecorded(recorder_, target, [&] { return ForwardingFiles::CopyOver(source, target); });
}

SystemCode RecordedFiles::MoveTo(const std::wstring& source, const std::wstring& target) {
  if (recorder_.IsScratch(source) && recorder_.IsScratch(target)) {
    return ForwardingFiles::MoveTo(source, target);
  }
  // It would be taken into the restore point instead.
  if (IsLink(source)) return kAccessDenied;
  std::vector<std::wstring> noted;
  SystemCode code = recorder_.TreeMoves(source, target, noted);
  if (code == kSystemOk) code = ForwardingFiles::MoveTo(source, target);
  for (const std::wstring& path : noted) recorder_.FileChanged(path);
  return code;
}

void RecordedFiles::Announce(std::span<const std::wstring> paths, ComingChange change) {
  recorder_.Announce(paths, change);
}

namespace {

std::vector<std::wstring> NamesOf(const std::vector<RegistryValue>& values) {
  std::vector<std::wstring> names;
  names.reserve(values.size());
  for (const RegistryValue& value : values) names.push_back(value.name);
  return names;
}

std::vector<std::wstring> NamesOf(const std::vector<RegistryValueChange>& values) {
  std::vector<std::wstring> names;
  names.reserve(values.size());
  for (const RegistryValueChange& change : values) names.push_back(change.value.name);
  return names;
}

struct NamedKey {
  RegistryHive hive;
  std::wstring path;
};

// An import whose end is noted for the keys that it changes.
class RecordedImport : public RunningTool {
 public:
  RecordedImport(std::unique_ptr<RunningTool> tool, std::vector<NamedKey> keys,
                 ChangeRecorder& recorder)
      : tool_(std::move(tool)), keys_(std::move(keys)), recorder_(recorder) {}

  bool WaitForEnd() override {
    const bool succeeded = tool_->WaitForEnd();
    for (NamedKey& key : std::exchange(keys_, {})) {
      recorder_.KeyChanged(key.hive, std::move(key.path));
    }
    return succeeded;
  }

 private:
  std::unique_ptr<RunningTool> tool_;
  std::vector<NamedKey> keys_;
  ChangeRecorder& recorder_;
};

void NoteKey(const RegistryKeyChange& change, ChangeRecorder& recorder,
             std::vector<NamedKey>& keys) {
  std::vector<std::wstring> noted;
  if (change.remove) {
    recorder.KeyTreeChanges(change.hive, change.keyPath, noted);
  } else {
    recorder.KeyChanges(change.hive, change.keyPath, NamesOf(change.values));
    noted.push_back(change.keyPath);
  }
  for (std::wstring& path : noted) keys.push_back({change.hive, std::move(path)});
}

}  // namespace

template <typename Change>
SystemCode RecordedRegistry::ChangeKey(RegistryHive hive, const std::wstring& keyPath,
                                       const std::vector<std::wstring>& setting, Change change) {
  recorder_.KeyChanges(hive, keyPath, setting);
  if (const SystemCode code = recorder_.NotesAreSafe(); code != kSystemOk) return code;
  const SystemCode code = change();
  recorder_.KeyChanged(hive, keyPath);
  return code;
}

SystemCode RecordedRegistry::SetValues(RegistryHive hive, const std::wstring& keyPath,
                                       const std::vector<RegistryValue>& values) {
  return ChangeKey(hive, keyPath, NamesOf(values),
                   [&] { return ForwardingRegistry::SetValues(hive, keyPath, values); });
}

SystemCode RecordedRegistry::CreateKey(RegistryHive hive, const std::wstring& keyPath) {
  return ChangeKey(hive, keyPath, {}, [&] { return ForwardingRegistry::CreateKey(hive, keyPath); });
}

SystemCode RecordedRegistry::DeleteValue(RegistryHive hive, const std::wstring& keyPath,
                                         const std::wstring& name) {
  return ChangeKey(hive, keyPath, {},
                   [&] { return ForwardingRegistry::DeleteValue(hive, keyPath, name); });
}

SystemCode RecordedRegistry::DeleteTree(RegistryHive hive, const std::wstring& keyPath) {
  // An empty path is refused there, and would be the whole hive here.
  if (keyPath.empty()) return ForwardingRegistry::DeleteTree(hive, keyPath);
  std::vector<std::wstring> noted;
  recorder_.KeyTreeChanges(hive, keyPath, noted);
  SystemCode code = recorder_.NotesAreSafe();
  if (code == kSystemOk) code = ForwardingRegistry::DeleteTree(hive, keyPath);
  for (const std::wstring& path : noted) recorder_.KeyChanged(hive, path);
  return code;
}

SystemCode RecordedRegistry::CopyTree(RegistryHive sourceHive, const std::wstring& sourcePath,
                                      RegistryHive targetHive, const std::wstring& targetPath) {
  std::vector<std::wstring> noted;
  NoteCopy(sourceHive, sourcePath, targetHive, targetPath, noted);
  SystemCode code = recorder_.NotesAreSafe();
  if (code == kSystemOk) {
    code = ForwardingRegistry::CopyTree(sourceHive, sourcePath, targetHive, targetPath);
  }
  for (const std::wstring& path : noted) recorder_.KeyChanged(targetHive, path);
  return code;
}

void RecordedRegistry::NoteCopy(RegistryHive sourceHive, const std::wstring& sourcePath,
                                RegistryHive targetHive, const std::wstring& targetPath,
                                std::vector<std::wstring>& noted) {
  const auto subkeys = SubkeyNames(sourceHive, sourcePath);
  const auto values = Values(sourceHive, sourcePath);
  if (!subkeys || !values) return;
  recorder_.KeyChanges(targetHive, targetPath, NamesOf(*values));
  noted.push_back(targetPath);
  for (const std::wstring& subkey : *subkeys) {
    NoteCopy(sourceHive, JoinKey(sourcePath, subkey), targetHive, JoinKey(targetPath, subkey),
             noted);
  }
}

std::unique_ptr<RunningTool> RecordedRegistryTool::ImportFile(const std::wstring& filePath) {
  std::vector<NamedKey> keys;
  const auto note = [&](const RegistryKeyChange& key) { NoteKey(key, recorder_, keys); };
  const bool isRead = ReadRegistryKeys(files_, filePath, note);
  if (isRead && recorder_.NotesAreSafe() != kSystemOk) return nullptr;
  auto tool = ForwardingRegistryTool::ImportFile(filePath);
  if (!tool) return nullptr;
  return std::make_unique<RecordedImport>(std::move(tool), std::move(keys), recorder_);
}

}  // namespace carrovan
