#include "platform/windows/tarvik_ports.h"

#include <array>
#include <limits>
#include <utility>

#include "platform/windows/module_loading.h"
#include "platform/windows/tarvik_library.h"
#include "platform/windows/windows_file_system.h"
#include "support/tarvik_api.h"

namespace carrovan {

std::optional<std::wstring> CurrentTarvikLanguage() {
  ModuleHandle library;
  if (LoadModule(TarvikPath(), library) != kSystemOk) return std::nullopt;
  const auto getLanguage = reinterpret_cast<EyeGetLangSupportFunction>(
      reinterpret_cast<void*>(GetProcAddress(library.Get(), "EyeGetLangSupport")));
  const EyeLangSupport* language = getLanguage != nullptr ? getLanguage() : nullptr;
  if (language == nullptr) return std::nullopt;
  std::array<wchar_t, 20> name{};
  const int done =
      language->currentLanguageName(language, EYE_LANGUAGE_ID, name.data(), name.size());
  if (done == 0) return std::nullopt;
  name.back() = L'\0';
  return name.data();
}

namespace {

std::wstring TextOf(EyeTextFunction function) { return TextFromTarvik(function()); }

}  // namespace

std::wstring TarvikProduct::StartupFolder() const { return TextOf(functions_.startupFolder); }

std::wstring TarvikProduct::CompanyShortName() const { return TextOf(functions_.companyShortName); }

std::wstring TarvikProduct::ProductName() const { return TextOf(functions_.productName); }

std::wstring TarvikProduct::HumanReadableVersion() const {
  return TextOf(functions_.humanReadableVersion);
}

std::wstring TarvikProduct::ProductVersion() const { return TextOf(functions_.productVersion); }

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
    return ArchiveItem{TextFromTarvik(entry.name), entry.sizeBytes, entry.packedSizeBytes,
                       std::nullopt};
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
