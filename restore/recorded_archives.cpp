#include "restore/recorded_archives.h"

#include "restore/recorded_change.h"

namespace carrovan {
namespace {

ArchiveResult ResultOf(SystemCode code) {
  return code == kSystemDiskFull ? ArchiveResult::kDiskFull : ArchiveResult::kTargetNotWritable;
}

class Writer : public ArchiveWriter {
 public:
  Writer(std::unique_ptr<ArchiveWriter> writer, std::wstring path, ChangeRecorder& recorder)
      : writer_(std::move(writer)), path_(std::move(path)), recorder_(recorder) {}

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
  ArchiveResult Extract(std::size_t index, const std::wstring& targetPath) override {
    return MakeRecorded(
        recorder_, targetPath, [&] { return reader_->Extract(index, targetPath); }, ResultOf);
  }

 private:
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

}  // namespace carrovan
