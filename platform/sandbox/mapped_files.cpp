#include "platform/sandbox/mapped_files.h"

#include <filesystem>
#include <utility>

#include "platform/posix/host_access.h"
#include "support/files/os_file.h"
#include "support/zip/zip_reader.h"
#include "support/zip/zip_writer.h"

namespace carrovan {
namespace {

class MappedWriter : public ArchiveWriter {
 public:
  MappedWriter(const PathMapper& paths, std::unique_ptr<ZipWriter> writer)
      : paths_(paths), writer_(std::move(writer)) {}

  void Expect(const std::wstring& sourcePath) override {
    const auto source = paths_.ToHost(sourcePath);
    if (source && OwnerMayRead(*source)) writer_->Expect(*source);
  }

  ArchiveResult Add(const std::wstring& entryName, const std::wstring& sourcePath) override {
    const auto source = paths_.ToHost(sourcePath);
    if (!source) return ArchiveResult::kSourceMissing;
    if (!OwnerMayRead(*source)) return ArchiveResult::kSourceUnreadable;
    return writer_->Add(entryName, *source);
  }

  ArchiveResult Close() override { return writer_->Close(); }

 private:
  const PathMapper& paths_;
  std::unique_ptr<ZipWriter> writer_;
};

class MappedReader : public ArchiveExaminer {
 public:
  MappedReader(const PathMapper& paths, std::unique_ptr<ZipReader> reader)
      : paths_(paths), reader_(std::move(reader)) {}

  std::optional<ArchiveItem> Item(std::size_t index) const override { return reader_->Item(index); }

  void Expect(std::size_t index) override { reader_->Expect(index); }

  ArchiveResult Extract(std::size_t index, const std::wstring& targetPath) override {
    const auto target = paths_.ToHost(targetPath);
    if (!target || !paths_.MayBeMade(targetPath) || !IsShortEnough(targetPath)) {
      return ArchiveResult::kTargetNotWritable;
    }
    return reader_->Extract(index, *target);
  }

  std::optional<std::vector<std::uint8_t>> Read(std::size_t index,
                                                std::size_t limitBytes) override {
    return reader_->Read(index, limitBytes);
  }

  ArchiveResult ReadInParts(std::size_t index, const TakePart& take) override {
    return reader_->ReadInParts(index, take);
  }

  // No extraction could make the folders of a name that is too long on its own.
  ArchiveResult Check(std::size_t index) override {
    const auto item = reader_->Item(index);
    if (item && !IsShortEnough(item->name)) return ArchiveResult::kNameRefused;
    return reader_->Check(index);
  }

  std::optional<std::wstring> HeaderProblem(std::size_t index) override {
    return reader_->HeaderProblem(index);
  }

  std::uint64_t SizeBytes() const override { return reader_->SizeBytes(); }

 private:
  const PathMapper& paths_;
  std::unique_ptr<ZipReader> reader_;
};

}  // namespace

std::unique_ptr<ArchiveWriter> ZipArchiveLibrary::Create(const std::wstring& archivePath,
                                                         ArchivePurpose purpose) {
  const auto archive = paths_.ToHost(archivePath);
  if (!archive || !paths_.MayBeMade(archivePath)) return nullptr;
  auto writer = ZipWriter::Create(*archive);
  if (!writer) return nullptr;
  writer->UseThreads(threads_);
  if (purpose == ArchivePurpose::kUnpackAtOnce) writer->StoreUncompressed();
  return std::make_unique<MappedWriter>(paths_, std::move(writer));
}

std::unique_ptr<ArchiveReader> ZipArchiveLibrary::Open(const std::wstring& archivePath) {
  return Examine(archivePath);
}

std::unique_ptr<ArchiveExaminer> ZipArchiveLibrary::Examine(const std::wstring& archivePath) {
  const auto archive = paths_.ToHost(archivePath);
  if (!archive || !OwnerMayRead(*archive)) return nullptr;
  auto reader = ZipReader::Open(*archive);
  if (!reader) return nullptr;
  reader->UseThreads(threads_);
  return std::make_unique<MappedReader>(paths_, std::move(reader));
}

std::unique_ptr<HostFiles> OpenHostFiles() {
  return std::make_unique<MappedFiles>(std::make_unique<HostPathMapper>());
}

}  // namespace carrovan
