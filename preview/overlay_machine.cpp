#include "preview/overlay_machine.h"

#include <utility>

#include "platform/file_operations.h"
#include "platform/registry_file.h"
#include "platform/registry_tool.h"
#include "text/path_text.h"

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

class Reader : public ArchiveReader {
 public:
  Reader(OverlayFiles& files, std::unique_ptr<ArchiveReader> reader)
      : files_(files), reader_(std::move(reader)) {}

  std::optional<ArchiveItem> Item(std::size_t index) const override { return reader_->Item(index); }

  ArchiveResult Extract(std::size_t index, const std::wstring& targetPath) override {
    const auto item = reader_->Item(index);
    if (!item) return ArchiveResult::kNoSuchItem;
    if (RefusalOfStoredName(item->name)) return ArchiveResult::kNameRefused;
    if (EndsInSeparator(item->name)) {
      return MakeFolders(targetPath) ? ArchiveResult::kDone : ArchiveResult::kTargetNotWritable;
    }
    MakeFolders(RemoveFileSpec(targetPath));
    if (files_.CodeOfWriting(targetPath) != kSystemOk) return ArchiveResult::kTargetNotWritable;
    const std::wstring spoolFile = files_.NewSpoolFile();
    const ArchiveResult result = reader_->Extract(index, spoolFile);
    if (result != ArchiveResult::kDone) return result;
    const SystemCode code = files_.Adopt(spoolFile, targetPath);
    return code == kSystemOk ? ArchiveResult::kDone : ArchiveResult::kTargetNotWritable;
  }

 private:
  bool MakeFolders(const std::wstring& path) {
    return MakeFolderPath(files_, WithoutTrailingBackslashes(path)) == kSystemOk;
  }

  OverlayFiles& files_;
  std::unique_ptr<ArchiveReader> reader_;
};

}  // namespace

std::unique_ptr<ArchiveWriter> OverlayArchives::Create(const std::wstring& archivePath,
                                                       ArchivePurpose purpose) {
  if (files_.CodeOfWriting(archivePath) != kSystemOk) return nullptr;
  std::wstring spoolFile = files_.NewSpoolFile();
  auto writer = machine_.Create(spoolFile, purpose);
  if (writer == nullptr) return nullptr;
  return std::make_unique<Writer>(files_, archivePath, std::move(spoolFile), std::move(writer));
}

std::unique_ptr<ArchiveReader> OverlayArchives::Open(const std::wstring& archivePath) {
  auto reader = machine_.Open(files_.Locate(archivePath));
  return reader == nullptr ? nullptr : std::make_unique<Reader>(files_, std::move(reader));
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
  const auto file = ReadRegistryFile(files_, filePath);
  return std::make_unique<EndedTool>(file && ApplyRegistryFile(*file, registry_) == kSystemOk);
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

MachineChanges OverlayMachine::Changes() const {
  MachineChanges changes;
  AddFileChanges(files_->Tree(), *files_, *machine_.files, changes);
  AddRegistryChanges(registry_, *machine_.registry, changes);
  return changes;
}

}  // namespace carrovan
