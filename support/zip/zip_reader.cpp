#include "support/zip/zip_reader.h"

#include <zip.h>

#include <algorithm>
#include <mutex>
#include <new>
#include <span>
#include <string>
#include <utility>

#include "support/files/os_file.h"
#include "support/files/part_file.h"
#include "support/zip/archive_layout.h"
#include "support/zip/item_unpacker.h"
#include "support/zip/zip_source.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

using Zip = std::unique_ptr<zip_t, decltype(&zip_discard)>;

Zip OpenZip(ArchiveInput& input) {
  zip_source_t* source = zip_source_function_create(&ArchiveInput::Call, &input, nullptr);
  zip_t* zip = source ? zip_open_from_source(source, ZIP_RDONLY, nullptr) : nullptr;
  if (source && !zip) zip_source_free(source);
  return Zip(zip, zip_discard);
}

// Programs put something of their own in front of an archive, so that it unpacks itself. Its
// records then count from where it begins, which libzip does not look for.
Zip OpenBehindOthers(ArchiveInput& input) {
  const auto layout = FindArchive(input.File(), input.SizeBytes());
  if (!layout || layout->startOffset == 0) return Zip(nullptr, zip_discard);
  input.StartAt(layout->startOffset);
  return OpenZip(input);
}

// The extended timestamp when there is one, else the archive's own field, which is in local time.
std::int64_t ModifiedSeconds(zip_t* zip, zip_uint64_t index) {
  constexpr zip_uint16_t kExtendedTimestamp = 0x5455;
  zip_uint16_t length = 0;
  const zip_uint8_t* field =
      zip_file_extra_field_get_by_id(zip, index, kExtendedTimestamp, 0, &length, ZIP_FL_CENTRAL);
  if (field && length >= 5 && (field[0] & 1) != 0) {
    std::uint32_t seconds = 0;
    for (int i = 4; i > 0; --i) seconds = seconds << 8 | field[i];
    return static_cast<std::int32_t>(seconds);
  }
  zip_stat_t item = {};
  return zip_stat_index(zip, index, 0, &item) == 0 ? item.mtime : 0;
}

// The file that an item becomes. It is not started before there is something to write, so that an
// item that is found bad in time makes no folder and no file.
class TargetFile {
 public:
  explicit TargetFile(const std::filesystem::path& target) : target_(target) {}

  ArchiveResult Append(std::span<const std::uint8_t> piece) {
    FileStatus status = Start();
    if (status == FileStatus::kDone) status = part_.File().WriteAt(sizeBytes_, piece);
    sizeBytes_ += piece.size();
    return ResultOfWriting(status);
  }

  ArchiveResult Complete(std::int64_t modifiedSeconds) {
    const FileStatus status = Start();
    if (status != FileStatus::kDone) return ResultOfWriting(status);
    // A time that the file system cannot keep is no reason to lose the item.
    static_cast<void>(part_.File().SetModified(modifiedSeconds));
    return ResultOfWriting(part_.Complete());
  }

 private:
  FileStatus Start() {
    if (part_.File().IsOpen()) return FileStatus::kDone;
    const FileStatus status = MakeFolders(target_.parent_path());
    return status == FileStatus::kDone ? part_.CreateForItem(target_) : status;
  }

  const std::filesystem::path& target_;
  PartFile part_;
  std::uint64_t sizeBytes_ = 0;
};

}  // namespace

class ZipReader::Archive {
 public:
  Archive(std::unique_ptr<ArchiveInput> input, Zip zip)
      : input_(std::move(input)), zip_(std::move(zip)), unpacker_(zip_.get(), access_) {}

  void UseThreads(unsigned threads) { unpacker_.UseThreads(threads); }

  void Expect(std::size_t index) { unpacker_.Expect(index); }

  bool Has(std::size_t index) const {
    const std::lock_guard lock(access_);
    return index < static_cast<zip_uint64_t>(zip_get_num_entries(zip_.get(), 0));
  }

  ArchiveItem Item(std::size_t index) const {
    const std::lock_guard lock(access_);
    zip_stat_t facts = {};
    if (zip_stat_index(zip_.get(), index, 0, &facts) != 0) return {};
    ArchiveItem item;
    if (IsUtf8(facts.name)) item.name = FromUtf8(facts.name);
    std::replace(item.name.begin(), item.name.end(), L'/', L'\\');
    item.sizeBytes = facts.size;
    item.packedSizeBytes = facts.comp_size;
    if ((facts.valid & ZIP_STAT_CRC) != 0) item.crc32 = facts.crc;
    return item;
  }

  ArchiveResult Extract(std::size_t index, const std::filesystem::path& target) {
    const std::wstring name = Item(index).name;
    if (RefusalOfStoredName(name)) return ArchiveResult::kNameRefused;
    if (name.ends_with(L'\\')) return ResultOfWriting(MakeFolders(target));
    if (!MayReplace(target)) return ArchiveResult::kTargetNotWritable;
    TargetFile file(target);
    const ArchiveResult result = unpacker_.Unpack(
        index, [&](std::span<const std::uint8_t> piece) { return file.Append(piece); });
    if (result != ArchiveResult::kDone) return result;
    return file.Complete(Modified(index));
  }

  std::optional<std::vector<std::uint8_t>> Read(std::size_t index, std::size_t limitBytes) {
    if (Item(index).sizeBytes > limitBytes) return std::nullopt;
    std::vector<std::uint8_t> content;
    const ArchiveResult result = unpacker_.Unpack(index, [&](std::span<const std::uint8_t> piece) {
      content.insert(content.end(), piece.begin(), piece.end());
      return ArchiveResult::kDone;
    });
    if (result != ArchiveResult::kDone) return std::nullopt;
    return content;
  }

  ArchiveResult ReadInParts(std::size_t index, const TakePart& take) {
    return unpacker_.Unpack(index, [&](std::span<const std::uint8_t> piece) {
      take({reinterpret_cast<const char*>(piece.data()), piece.size()});
      return ArchiveResult::kDone;
    });
  }

  std::wstring HeaderProblem(std::size_t index) {
    if (headerProblems_.empty()) headerProblems_ = CompareAllHeaders();
    return headerProblems_[index];
  }

  std::uint64_t SizeBytes() const { return input_->SizeBytes(); }

 private:
  std::int64_t Modified(std::size_t index) const {
    const std::lock_guard lock(access_);
    return ModifiedSeconds(zip_.get(), index);
  }

  std::vector<std::wstring> CompareAllHeaders() const {
    const std::lock_guard lock(access_);
    const auto items = static_cast<std::size_t>(zip_get_num_entries(zip_.get(), 0));
    const auto facts = input_->File().Facts();
    const auto layout = FindArchive(input_->File(), facts ? facts->sizeBytes : 0);
    if (!layout) return std::vector<std::wstring>(items, L"the directory cannot be found again");
    return CompareHeaders(input_->File(), *layout, items);
  }

  std::unique_ptr<ArchiveInput> input_;
  Zip zip_;
  std::vector<std::wstring> headerProblems_;  // by item, once they are asked for
  mutable std::mutex access_;                 // to libzip, while items are unpacked ahead
  ItemUnpacker unpacker_;                     // last: its threads use the archive
};

ZipReader::ZipReader(std::unique_ptr<Archive> archive) : archive_(std::move(archive)) {}

ZipReader::~ZipReader() = default;

std::unique_ptr<ZipReader> ZipReader::Open(const std::filesystem::path& archive) {
  auto input = ArchiveInput::Open(archive);
  if (!input) return nullptr;
  Zip zip = OpenZip(*input);
  if (!zip) zip = OpenBehindOthers(*input);
  if (!zip) return nullptr;
  auto opened = std::make_unique<Archive>(std::move(input), std::move(zip));
  return std::unique_ptr<ZipReader>(new ZipReader(std::move(opened)));
}

std::optional<ArchiveItem> ZipReader::Item(std::size_t index) const {
  if (!archive_->Has(index)) return std::nullopt;
  return archive_->Item(index);
}

void ZipReader::UseThreads(unsigned threads) { archive_->UseThreads(threads); }

void ZipReader::Expect(std::size_t index) {
  try {
    if (archive_->Has(index)) archive_->Expect(index);
  } catch (const std::bad_alloc&) {
    // Extracting the item finds that out again.
  }
}

ArchiveResult ZipReader::Extract(std::size_t index, const std::filesystem::path& target) {
  if (!archive_->Has(index)) return ArchiveResult::kNoSuchItem;
  return archive_->Extract(index, target);
}

std::optional<std::vector<std::uint8_t>> ZipReader::Read(std::size_t index,
                                                         std::size_t limitBytes) {
  if (!archive_->Has(index)) return std::nullopt;
  return archive_->Read(index, limitBytes);
}

ArchiveResult ZipReader::ReadInParts(std::size_t index, const TakePart& take) {
  if (!archive_->Has(index)) return ArchiveResult::kNoSuchItem;
  return archive_->ReadInParts(index, take);
}

ArchiveResult ZipReader::Check(std::size_t index) {
  return ReadInParts(index, [](std::string_view) {});
}

std::optional<std::wstring> ZipReader::HeaderProblem(std::size_t index) {
  if (!archive_->Has(index)) return std::nullopt;
  std::wstring problem = archive_->HeaderProblem(index);
  return problem.empty() ? std::nullopt : std::optional(std::move(problem));
}

std::uint64_t ZipReader::SizeBytes() const { return archive_->SizeBytes(); }

}  // namespace carrovan
