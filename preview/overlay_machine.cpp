#include "preview/overlay_machine.h"

#include <set>
#include <utility>

#include "platform/file_operations.h"
#include "platform/registry_file.h"
#include "platform/registry_tool.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

class Writer : public ArchiveWriter {
 public:
  Writer(OverlayFiles& files, std::wstring path, std::wstring spoolFile,
         std::unique_ptr<ArchiveWriter> writer)
      : files_(files),
        path_(std::move(path)),
        spoolFile_(std::move(spoolFile)),
        writer_(std::move(writer)) {}

  void Expect(const std::wstring& sourcePath) override {
    writer_->Expect(files_.Locate(sourcePath));
  }

  ArchiveResult Add(const std::wstring& entryName, const std::wstring& sourcePath) override {
    const bool isFolder = files_.IsFolder(sourcePath);
    return isFolder ? ArchiveResult::kSourceUnreadable
                    : writer_->Add(entryName, files_.Locate(sourcePath));
  }

  ArchiveResult Close() override {
    const ArchiveResult result = writer_->Close();
    if (result != ArchiveResult::kDone) return result;
    const SystemCode code = files_.Adopt(spoolFile_, path_);
    return code == kSystemOk ? ArchiveResult::kDone : ArchiveResult::kTargetNotWritable;
  }

 private:
  OverlayFiles& files_;
  std::wstring path_;
  std::wstring spoolFile_;
  std::unique_ptr<ArchiveWriter> writer_;
};

ArchiveResult ResultOfReading(SystemCode code) {
  if (code == kSystemOk) return ArchiveResult::kDone;
  const bool isMissing = code == kFileNotFound || code == kPathNotFound;
  return isMissing ? ArchiveResult::kSourceMissing : ArchiveResult::kSourceUnreadable;
}

// Takes the files that a zip archive would take.
class ListWriter : public ArchiveWriter {
 public:
  using Lists = std::map<std::wstring, ArchiveList>;

  ListWriter(OverlayFiles& files, std::wstring path, Lists& lists)
      : files_(files), path_(std::move(path)), lists_(lists) {}

  ArchiveResult Add(const std::wstring& entryName, const std::wstring& sourcePath) override {
    const std::wstring name = ReplaceAll(entryName, L"/", L"\\");
    if (name.ends_with(L'\\') || RefusalOfStoredName(name) || names_.contains(name)) {
      return ArchiveResult::kNameRefused;
    }
    const ArchiveResult result = ResultOfReading(TryToRead(sourcePath));
    if (result != ArchiveResult::kDone) return result;
    names_.insert(name);
    sources_.emplace_back(name, sourcePath);
    return ArchiveResult::kDone;
  }

  ArchiveResult Close() override {
    ArchiveList list{path_, {}};
    for (const auto& [name, path] : sources_) {
      const bool isThere = files_.Exists(path) && !files_.IsFolder(path);
      if (!isThere) return ArchiveResult::kSourceUnreadable;
      list.files.push_back({name, files_.Locate(path), files_.FileBytes(path)});
    }
    if (files_.WriteBytes(path_, {}) != kSystemOk) return ArchiveResult::kTargetNotWritable;
    lists_[files_.Locate(path_)] = std::move(list);
    return ArchiveResult::kDone;
  }

 private:
  SystemCode TryToRead(const std::wstring& path) const {
    return files_.ReadInParts(path, [](std::string_view, std::uint64_t) { return false; });
  }

  OverlayFiles& files_;
  std::wstring path_;
  Lists& lists_;
  std::vector<std::pair<std::wstring, std::wstring>> sources_;  // names and paths
  std::set<std::wstring, NameLess> names_;
};

// Shows items at paths of the overlay.
class Reader : public ArchiveReader {
 public:
  explicit Reader(OverlayFiles& files) : files_(files) {}

  ArchiveResult Extract(std::size_t index, const std::wstring& targetPath) override {
    const auto item = Item(index);
    if (!item) return ArchiveResult::kNoSuchItem;
    if (RefusalOfStoredName(item->name)) return ArchiveResult::kNameRefused;
    if (EndsInSeparator(item->name)) {
      return MakeFolders(targetPath) ? ArchiveResult::kDone : ArchiveResult::kTargetNotWritable;
    }
    MakeFolders(RemoveFileSpec(targetPath));
    if (files_.CodeOfWriting(targetPath) != kSystemOk) return ArchiveResult::kTargetNotWritable;
    std::wstring content;
    const ArchiveResult result = FindContent(index, content);
    if (result != ArchiveResult::kDone) return result;
    const SystemCode code = files_.Adopt(content, targetPath);
    return code == kSystemOk ? ArchiveResult::kDone : ArchiveResult::kTargetNotWritable;
  }

 protected:
  // The file of the machine or the spool that has an item's content.
  virtual ArchiveResult FindContent(std::size_t index, std::wstring& file) = 0;

  OverlayFiles& files_;

 private:
  bool MakeFolders(const std::wstring& path) {
    return MakeFolderPath(files_, WithoutTrailingBackslashes(path)) == kSystemOk;
  }
};

class SpoolingReader : public Reader {
 public:
  SpoolingReader(OverlayFiles& files, std::unique_ptr<ArchiveReader> reader)
      : Reader(files), reader_(std::move(reader)) {}

  std::optional<ArchiveItem> Item(std::size_t index) const override { return reader_->Item(index); }
  void Expect(std::size_t index) override { reader_->Expect(index); }

 protected:
  ArchiveResult FindContent(std::size_t index, std::wstring& file) override {
    file = files_.NewSpoolFile();
    return reader_->Extract(index, file);
  }

 private:
  std::unique_ptr<ArchiveReader> reader_;
};

class ListReader : public Reader {
 public:
  ListReader(OverlayFiles& files, std::vector<ArchiveList::File> list)
      : Reader(files), list_(std::move(list)) {}

  std::optional<ArchiveItem> Item(std::size_t index) const override {
    if (index >= list_.size()) return std::nullopt;
    const ArchiveList::File& file = list_[index];
    return ArchiveItem{file.name, file.sizeBytes, file.sizeBytes, std::nullopt};
  }

 protected:
  ArchiveResult FindContent(std::size_t index, std::wstring& file) override {
    file = list_[index].real;
    return ArchiveResult::kDone;
  }

 private:
  std::vector<ArchiveList::File> list_;
};

}  // namespace

std::unique_ptr<ArchiveWriter> OverlayArchives::Create(const std::wstring& archivePath,
                                                       ArchivePurpose purpose) {
  if (files_.CodeOfWriting(archivePath) != kSystemOk) return nullptr;
  if (purpose == ArchivePurpose::kUnpackAtOnce) {
    return std::make_unique<ListWriter>(files_, archivePath, lists_);
  }
  std::wstring spoolFile = files_.NewSpoolFile();
  auto writer = machine_.Create(spoolFile, purpose);
  if (writer == nullptr) return nullptr;
  return std::make_unique<Writer>(files_, archivePath, std::move(spoolFile), std::move(writer));
}

std::unique_ptr<ArchiveReader> OverlayArchives::Open(const std::wstring& archivePath) {
  const std::wstring real = files_.Locate(archivePath);
  if (const auto list = lists_.find(real); list != lists_.end()) {
    return std::make_unique<ListReader>(files_, list->second.files);
  }
  auto reader = machine_.Open(real);
  if (reader == nullptr) return nullptr;
  return std::make_unique<SpoolingReader>(files_, std::move(reader));
}

void OverlayArchives::WriteLeftLists() {
  for (const auto& [empty, list] : lists_) {
    if (files_.Locate(list.path) != empty) continue;
    const std::wstring spoolFile = files_.NewSpoolFile();
    const auto writer = machine_.Create(spoolFile, ArchivePurpose::kUnpackAtOnce);
    if (writer == nullptr) continue;
    for (const ArchiveList::File& file : list.files) {
      static_cast<void>(writer->Add(file.name, file.real));
    }
    if (writer->Close() == ArchiveResult::kDone) {
      static_cast<void>(files_.Adopt(spoolFile, list.path));
    }
  }
}

std::wstring OverlayProfiles::ReadValue(const std::wstring& section, const std::wstring& key,
                                        const std::wstring& filePath) const {
  return machine_.ReadValue(section, key, files_.Locate(filePath));
}

// A file of the spool never changes, so the copy that is written is made first.
bool OverlayProfiles::WriteValue(const std::wstring& section, const std::wstring& key,
                                 const std::wstring& value, const std::wstring& filePath) {
  std::string content;
  const SystemCode code = files_.ReadBytes(filePath, content);
  if (code != kFileNotFound &&
      (code != kSystemOk || files_.WriteBytes(filePath, content) != kSystemOk)) {
    return false;
  }
  if (code == kSystemOk) return machine_.WriteValue(section, key, value, files_.Locate(filePath));
  if (files_.CodeOfWriting(filePath) != kSystemOk) return false;
  const std::wstring spoolFile = files_.NewSpoolFile();
  return machine_.WriteValue(section, key, value, spoolFile) &&
         files_.Adopt(spoolFile, filePath) == kSystemOk;
}

std::unique_ptr<RunningTool> OverlayRegistryTool::ExportKey(const std::wstring&,
                                                            const std::wstring&) {
  return std::make_unique<EndedTool>(false);
}

std::unique_ptr<RunningTool> OverlayRegistryTool::ImportFile(const std::wstring& filePath) {
  SystemCode first = kSystemOk;
  const bool isRead = ReadRegistryKeys(files_, filePath, [&](const RegistryKeyChange& key) {
    const SystemCode code = ApplyRegistryKey(key, registry_);
    if (first == kSystemOk) first = code;
  });
  return std::make_unique<EndedTool>(isRead && first == kSystemOk);
}

OrReason<OverlayMachine> OverlayMachine::Open(const Machine& machine) {
  OrReason<OverlayFiles> files = OverlayFiles::Open(machine);
  if (!files.object) return {nullptr, files.reason};
  return {std::unique_ptr<OverlayMachine>(new OverlayMachine(machine, std::move(files.object))),
          {}};
}

OverlayMachine::OverlayMachine(const Machine& machine, std::unique_ptr<OverlayFiles> files)
    : machine_(machine),
      files_(std::move(files)),
      registry_(*machine.registry),
      profiles_(*machine.profiles, *files_),
      archives_(*machine.archives, *files_),
      registryTool_(*files_, registry_) {}

Machine OverlayMachine::Ports() {
  Machine ports = machine_;
  ports.files = files_.get();
  ports.registry = &registry_;
  ports.profiles = &profiles_;
  ports.archives = &archives_;
  ports.registryTool = &registryTool_;
  return ports;
}

MachineChanges OverlayMachine::Changes() {
  archives_.WriteLeftLists();
  MachineChanges changes;
  AddFileChanges(files_->Tree(), *files_, *machine_.files, changes);
  AddRegistryChanges(registry_, *machine_.registry, changes);
  return changes;
}

}  // namespace carrovan
