#include "platform/windows/tarvik_archive_library.h"

#include <limits>
#include <utility>

#include "platform/windows/system_path.h"

namespace carrovan {
namespace {

ArchiveResult ResultOf(std::uint32_t number) { return static_cast<ArchiveResult>(number); }

class TarvikWriter : public ArchiveWriter {
 public:
  TarvikWriter(const TarvikFunctions& functions, EyeZipHandle zip)
      : functions_(functions), zip_(zip) {}
  TarvikWriter(const TarvikWriter&) = delete;
  TarvikWriter& operator=(const TarvikWriter&) = delete;

  // The library gives an archive up when it is closed as if it had been opened for reading.
  ~TarvikWriter() override {
    if (zip_ != nullptr) functions_.closeZipU(zip_);
  }

  ArchiveResult Add(const std::wstring& entryName, const std::wstring& sourcePath) override {
    return ResultOf(functions_.zipAdd(zip_, entryName.c_str(), SystemPath(sourcePath).c_str()));
  }

  // The library closes its two kinds of archives by two functions, so the kind is asked for.
  ArchiveResult Close() override {
    const EyeZipHandle zip = std::exchange(zip_, nullptr);
    const bool isUnzip = functions_.isZipHandleU(zip) != 0;
    return ResultOf(isUnzip ? functions_.closeZipU(zip) : functions_.closeZipZ(zip));
  }

 private:
  TarvikFunctions functions_;
  EyeZipHandle zip_;
};

class TarvikReader : public ArchiveReader {
 public:
  TarvikReader(const TarvikFunctions& functions, EyeZipHandle zip)
      : functions_(functions), zip_(zip) {}
  TarvikReader(const TarvikReader&) = delete;
  TarvikReader& operator=(const TarvikReader&) = delete;
  ~TarvikReader() override { functions_.closeZipU(zip_); }

  std::optional<ArchiveItem> Item(std::size_t index) const override {
    EyeZipEntry entry = {};
    if (index > kLastIndex) return std::nullopt;
    if (functions_.getZipItem(zip_, static_cast<std::uint32_t>(index), &entry) != 0) {
      return std::nullopt;
    }
    return ArchiveItem{TextFromTarvik(entry.name), entry.sizeBytes, entry.packedSizeBytes};
  }

  ArchiveResult Extract(std::size_t index, const std::wstring& targetPath) override {
    if (index > kLastIndex) return ArchiveResult::kNoSuchItem;
    return ResultOf(functions_.unzipItem(zip_, static_cast<std::uint32_t>(index),
                                         SystemPath(targetPath).c_str()));
  }

 private:
  static constexpr std::size_t kLastIndex = std::numeric_limits<std::uint32_t>::max();

  TarvikFunctions functions_;
  EyeZipHandle zip_;
};

}  // namespace

std::unique_ptr<ArchiveWriter> TarvikArchiveLibrary::Create(const std::wstring& archivePath,
                                                            ArchivePurpose purpose) {
  const EyeZipHandle zip = functions_.createZip(SystemPath(archivePath).c_str(), nullptr);
  if (zip == nullptr) return nullptr;
  // Without the function the archive is compressed: slower, and just as good.
  if (purpose == ArchivePurpose::kUnpackAtOnce && functions_.storeZipItems != nullptr) {
    functions_.storeZipItems(zip);
  }
  return std::make_unique<TarvikWriter>(functions_, zip);
}

std::unique_ptr<ArchiveReader> TarvikArchiveLibrary::Open(const std::wstring& archivePath) {
  const EyeZipHandle zip = functions_.openZip(SystemPath(archivePath).c_str(), nullptr);
  if (zip == nullptr) return nullptr;
  return std::make_unique<TarvikReader>(functions_, zip);
}

}  // namespace carrovan
