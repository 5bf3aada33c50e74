#include "preview/overlay_archives.h"

#include <utility>

#include "platform/path_text.h"
#include "platform/stored_name.h"

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
    const std::wstring folder = WithoutTrailingBackslashes(path);
    if (files_.IsFolder(folder)) return true;
    const std::wstring above = RemoveFileSpec(folder);
    if (above != folder && !MakeFolders(above)) return false;
    return files_.CreateFolder(folder) == kSystemOk;
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

}  // namespace carrovan
