#include "support/zip/archive_layout.h"

#include <zip.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <deque>
#include <limits>
#include <memory>
#include <span>
#include <string_view>

#include "support/files/part_file.h"
#include "support/zip/zip_source.h"

namespace carrovan {
namespace {

constexpr std::uint32_t kLocalMark = 0x04034B50;
constexpr std::uint32_t kDirectoryMark = 0x02014B50;
constexpr std::uint32_t kDescriptorMark = 0x08074B50;
constexpr std::uint32_t kEndMark = 0x06054B50;
constexpr std::uint32_t kEnd64Mark = 0x06064B50;
constexpr std::uint32_t kLocator64Mark = 0x07064B50;

constexpr std::size_t kLocalBytes = 30;
constexpr std::size_t kRecordBytes = 46;
constexpr std::size_t kEndBytes = 22;
constexpr std::size_t kEnd64Bytes = 56;
constexpr std::size_t kLocator64Bytes = 20;
constexpr std::size_t kLongestComment = 0xFFFF;

constexpr std::uint16_t kIsEncrypted = 1;
constexpr std::uint16_t kSaysHowHardItWasPacked = 6;  // known to some only when it is packed
constexpr std::uint16_t kHasDescriptor = 8;
constexpr std::uint64_t kIsIn64 = 0xFFFFFFFF;  // a field whose number stands in the ZIP64 field

// Numbers of a record, little-endian; what lies behind its end is zero.
class Record {
 public:
  Record() = default;
  explicit Record(std::vector<std::uint8_t> bytes) : bytes_(std::move(bytes)) {}

  std::size_t Size() const { return bytes_.size(); }
  std::uint64_t Number(std::size_t at, std::size_t length) const {
    std::uint64_t number = 0;
    for (std::size_t i = length; i > 0; --i) {
      const std::size_t place = at + i - 1;
      number = number << 8 | (place < bytes_.size() ? bytes_[place] : 0U);
    }
    return number;
  }
  std::uint16_t Short(std::size_t at) const { return static_cast<std::uint16_t>(Number(at, 2)); }
  std::uint32_t Long(std::size_t at) const { return static_cast<std::uint32_t>(Number(at, 4)); }
  std::string_view Text(std::size_t at, std::size_t length) const {
    const std::string_view all(reinterpret_cast<const char*>(bytes_.data()), bytes_.size());
    return all.substr(std::min(at, all.size()), length);
  }

 private:
  std::vector<std::uint8_t> bytes_;
};

// Shorter than asked for at the file's end; empty when it cannot be read.
Record ReadRecord(const OsFile& file, std::uint64_t offset, std::size_t length) {
  std::vector<std::uint8_t> bytes(length);
  bytes.resize(file.ReadAt(offset, bytes).value_or(0));
  return Record(std::move(bytes));
}

// What a local header and the directory say of an item.
struct Facts {
  std::string name;
  std::uint16_t flags = 0;
  std::uint16_t method = 0;
  std::uint32_t checksum = 0;
  std::uint64_t packedBytes = 0;
  std::uint64_t sizeBytes = 0;
  std::uint64_t headerOffset = 0;  // in the archive; only the directory says
};

// Numbers that do not fit into their fields stand in an extra field, in this order.
void TakeNumbers64(const Record& extra, std::initializer_list<std::uint64_t*> numbers) {
  constexpr std::uint16_t kZip64 = 1;
  std::size_t at = 0;
  while (at + 4 <= extra.Size() && extra.Short(at) != kZip64) at += 4U + extra.Short(at + 2);
  const std::size_t end = std::min(at + 4 + extra.Short(at + 2), extra.Size());
  at += 4;
  for (std::uint64_t* const number : numbers) {
    if (*number != kIsIn64 || at + 8 > end) continue;
    *number = extra.Number(at, 8);
    at += 8;
  }
}

// One item's two records and the bytes that it takes.
struct Item {
  std::wstring problem;
  std::uint64_t begin = 0;
  std::uint64_t end = 0;
};

class HeaderComparison {
 public:
  HeaderComparison(const OsFile& file, const ArchiveLayout& layout)
      : file_(file), layout_(layout), next_(layout.directoryOffset) {}

  void TakeNext() {
    Facts said;
    Item item;
    item.problem = ReadDirectory(said);
    if (item.problem.empty()) CompareWith(said, item);
    items_.push_back(std::move(item));
  }

  std::vector<std::wstring> Finish() {
    NoteSharedBytes();
    std::vector<std::wstring> problems;
    for (Item& item : items_) problems.push_back(std::move(item.problem));
    return problems;
  }

 private:
  Record Read(std::uint64_t offset, std::size_t length) const {
    return ReadRecord(file_, layout_.startOffset + offset, length);
  }

  // The reason why there is no further record in the directory, or an empty text.
  std::wstring ReadDirectory(Facts& said) {
    const Record record = Read(next_, kRecordBytes);
    if (record.Size() < kRecordBytes || record.Long(0) != kDirectoryMark) {
      return L"the directory does not name it";
    }
    const std::size_t name = record.Short(28);
    const std::size_t extra = record.Short(30);
    const Record more = Read(next_ + kRecordBytes, name + extra);
    next_ += kRecordBytes + name + extra + record.Short(32);
    said = {std::string(more.Text(0, name)),
            record.Short(8),
            record.Short(10),
            record.Long(16),
            record.Long(20),
            record.Long(24),
            record.Long(42)};
    const std::string_view field = more.Text(name, extra);
    TakeNumbers64(Record({field.begin(), field.end()}),
                  {&said.sizeBytes, &said.packedBytes, &said.headerOffset});
    return {};
  }

  void CompareWith(const Facts& said, Item& item) const {
    const Record header = Read(said.headerOffset, kLocalBytes);
    if (header.Size() < kLocalBytes || header.Long(0) != kLocalMark) {
      item.problem = L"it has no local header";
      return;
    }
    const std::size_t name = header.Short(26);
    const std::size_t extra = header.Short(28);
    if (name != said.name.size()) {
      item.problem = L"its local header bears another name";
      return;
    }
    const Record more = Read(said.headerOffset + kLocalBytes, name + extra);
    Facts local = {std::string(more.Text(0, name)),
                   header.Short(6),
                   header.Short(8),
                   header.Long(14),
                   header.Long(18),
                   header.Long(22),
                   said.headerOffset};
    const std::string_view field = more.Text(name, extra);
    TakeNumbers64(Record({field.begin(), field.end()}), {&local.sizeBytes, &local.packedBytes});
    item.begin = said.headerOffset;
    item.end = said.headerOffset + kLocalBytes + name + extra + said.packedBytes;
    item.problem = Difference(said, local);
    if (item.problem.empty()) item.problem = ProblemOfPlace(said, local, item);
  }

  // What is written only when the content's end is known may be left open in the local header.
  static std::wstring Difference(const Facts& said, const Facts& local) {
    const bool isOpen = (local.flags & kHasDescriptor) != 0;
    const auto differs = [isOpen](std::uint64_t here, std::uint64_t there) {
      return here != there && !(isOpen && here == 0);
    };
    if (local.name != said.name) return L"its local header bears another name";
    if (local.method != said.method) return L"its local header names another method";
    if (((local.flags ^ said.flags) & kIsEncrypted) != 0) {
      return L"its local header and the directory differ on whether it is encrypted";
    }
    if (((local.flags ^ said.flags) & ~kSaysHowHardItWasPacked) != 0) {
      return L"its local header bears other flags";
    }
    if (differs(local.checksum, said.checksum)) return L"its local header bears another checksum";
    if (differs(local.sizeBytes, said.sizeBytes) || differs(local.packedBytes, said.packedBytes)) {
      return L"its local header bears another size";
    }
    return {};
  }

  std::wstring ProblemOfPlace(const Facts& said, const Facts& local, Item& item) const {
    // Written so that a sum that overflows is found as well.
    if (said.packedBytes > layout_.directoryOffset || item.end > layout_.directoryOffset) {
      return L"its content does not end in front of the directory";
    }
    if ((local.flags & kHasDescriptor) == 0) return {};
    const std::size_t length = DescriptorBytes(said, item.end);
    if (length == 0) return L"what follows its content bears another checksum or size";
    item.end += length;
    return {};
  }

  // The descriptor comes with or without a mark, its sizes with 32 or 64 bits. 0 for none that says
  // what the directory says.
  std::size_t DescriptorBytes(const Facts& said, std::uint64_t offset) const {
    const Record record = Read(offset, 24);
    for (const std::size_t mark : {std::size_t{4}, std::size_t{0}}) {
      if (mark != 0 && record.Long(0) != kDescriptorMark) continue;
      if (record.Long(mark) != said.checksum) continue;
      for (const std::size_t width : {std::size_t{4}, std::size_t{8}}) {
        const std::size_t length = mark + 4 + 2 * width;
        if (length <= record.Size() && record.Number(mark + 4, width) == said.packedBytes &&
            record.Number(mark + 4 + width, width) == said.sizeBytes) {
          return length;
        }
      }
    }
    return 0;
  }

  void NoteSharedBytes() {
    std::vector<Item*> placed;
    for (Item& item : items_) {
      if (item.problem.empty()) placed.push_back(&item);
    }
    std::ranges::sort(placed, {}, &Item::begin);
    Item* furthest = nullptr;
    for (Item* const item : placed) {
      if (furthest != nullptr && item->begin < furthest->end) {
        furthest->problem = item->problem = L"it shares bytes with another item";
      }
      if (furthest == nullptr || item->end > furthest->end) furthest = item;
    }
  }

  const OsFile& file_;
  const ArchiveLayout& layout_;
  std::uint64_t next_;  // record in the directory
  std::vector<Item> items_;
};

// Where the end record begins. One whose comment ends with the file goes before others, which may
// lie in a comment.
std::optional<std::size_t> FindEndRecord(const Record& tail) {
  std::optional<std::size_t> found;
  for (std::size_t at = tail.Size(); at-- > 0;) {
    if (at + kEndBytes > tail.Size() || tail.Long(at) != kEndMark) continue;
    const std::size_t end = at + kEndBytes + tail.Short(at + 20);
    if (end == tail.Size()) return at;
    if (end < tail.Size() && !found) found = at;
  }
  return found;
}

// Takes the numbers of the ZIP64 end record, where there is one, and gives where the directory
// ends.
std::uint64_t TakeEnd64(const OsFile& file, std::uint64_t endOffset, ArchiveLayout& layout) {
  if (endOffset < kLocator64Bytes + kEnd64Bytes) return endOffset;
  const std::uint64_t locator = endOffset - kLocator64Bytes;
  const Record found = ReadRecord(file, locator, kLocator64Bytes);
  if (found.Long(0) != kLocator64Mark) return endOffset;
  // In an archive with bytes in front, the place that the locator names is another one.
  for (const std::uint64_t at : {found.Number(8, 8), locator - kEnd64Bytes}) {
    const Record record = ReadRecord(file, at, kEnd64Bytes);
    if (record.Size() < kEnd64Bytes || record.Long(0) != kEnd64Mark) continue;
    layout.entries = record.Number(32, 8);
    layout.directoryBytes = record.Number(40, 8);
    layout.directoryOffset = record.Number(48, 8);
    return at;
  }
  return endOffset;
}

// Then an archive behind the file's beginning is an item of one that was cut short.
bool BeginsAsArchive(const OsFile& file) { return ReadRecord(file, 0, 4).Long(0) == kLocalMark; }

}  // namespace

std::optional<ArchiveLayout> FindArchive(const OsFile& file, std::uint64_t fileBytes) {
  constexpr std::size_t kMostBytes = kEndBytes + kLongestComment;
  const auto tailBytes = static_cast<std::size_t>(std::min<std::uint64_t>(fileBytes, kMostBytes));
  const Record tail = ReadRecord(file, fileBytes - tailBytes, tailBytes);
  const auto at = FindEndRecord(tail);
  if (!at) return std::nullopt;
  ArchiveLayout layout{0, tail.Long(*at + 16), tail.Long(*at + 12), tail.Short(*at + 10)};
  const std::uint64_t end = TakeEnd64(file, fileBytes - tailBytes + *at, layout);
  if (layout.directoryBytes > end || layout.directoryOffset > end - layout.directoryBytes) {
    return std::nullopt;
  }
  // Offsets count from the file's beginning or, where something was put in front, from behind it.
  for (const std::uint64_t start :
       {std::uint64_t{0}, end - layout.directoryBytes - layout.directoryOffset}) {
    if (start > 0 && BeginsAsArchive(file)) continue;
    const Record record = ReadRecord(file, start + layout.directoryOffset, 4);
    if (layout.entries > 0 && record.Long(0) != kDirectoryMark) continue;
    layout.startOffset = start;
    return layout;
  }
  return std::nullopt;
}

std::vector<std::wstring> CompareHeaders(const OsFile& file, const ArchiveLayout& layout,
                                         std::size_t items) {
  HeaderComparison comparison(file, layout);
  for (std::size_t i = 0; i < items; ++i) comparison.TakeNext();
  return comparison.Finish();
}

namespace {

using Zip = std::unique_ptr<zip_t, decltype(&zip_discard)>;

Zip NewZip(ArchiveOutput& output) {
  zip_source_t* source = zip_source_function_create(&ArchiveOutput::Call, &output, nullptr);
  zip_t* zip = source ? zip_open_from_source(source, ZIP_CREATE | ZIP_TRUNCATE, nullptr) : nullptr;
  if (source && !zip) zip_source_free(source);
  return Zip(zip, zip_discard);
}

// The extended timestamp: unlike the archive's own field it is in UTC and knows odd seconds.
bool SetTimestamp(zip_t* zip, zip_uint64_t index, std::int64_t modifiedSeconds) {
  constexpr zip_uint16_t kExtendedTimestamp = 0x5455;
  constexpr zip_uint8_t kHoldsModificationTime = 1;
  if (modifiedSeconds < std::numeric_limits<std::int32_t>::min() ||
      modifiedSeconds > std::numeric_limits<std::int32_t>::max()) {
    return true;
  }
  const auto seconds = static_cast<std::uint32_t>(modifiedSeconds);
  const auto byte = [&](int i) { return static_cast<zip_uint8_t>(seconds >> (8 * i)); };
  const std::array<zip_uint8_t, 5> field = {kHoldsModificationTime, byte(0), byte(1), byte(2),
                                            byte(3)};
  return zip_file_extra_field_set(zip, index, kExtendedTimestamp, ZIP_EXTRA_FIELD_NEW, field.data(),
                                  field.size(), ZIP_FL_LOCAL | ZIP_FL_CENTRAL) == 0;
}

// `Input` is one of the two sources of an entry's content.
template <typename Input>
bool AddEntry(zip_t* zip, Input& input, const StoredEntry& entry) {
  constexpr zip_uint32_t kArchiveAttribute = 0x20;
  zip_source_t* source = zip_source_function(zip, &Input::Call, &input);
  if (!source) return false;
  const zip_int64_t added = zip_file_add(zip, entry.nameUtf8.c_str(), source, ZIP_FL_ENC_UTF_8);
  if (added < 0) {
    zip_source_free(source);
    return false;
  }
  const auto index = static_cast<zip_uint64_t>(added);
  // Programs take a backslash for a separator only in the name of an entry that DOS made.
  return zip_file_set_external_attributes(zip, index, 0, ZIP_OPSYS_DOS, kArchiveAttribute) == 0 &&
         (entry.isDeflated || zip_set_file_compression(zip, index, ZIP_CM_STORE, 0) == 0) &&
         SetTimestamp(zip, index, entry.modifiedSeconds);
}

ArchiveResult ResultOfFailure(int zipError, FileStatus outputStatus) {
  if (zipError == ZIP_ER_MEMORY) return ArchiveResult::kOutOfMemory;
  if (outputStatus != FileStatus::kDone) return ResultOfWriting(outputStatus);
  const bool isSources = zipError == ZIP_ER_OPEN || zipError == ZIP_ER_READ;
  return isSources ? ArchiveResult::kSourceUnreadable : ArchiveResult::kTargetNotWritable;
}

ArchiveResult WriteEntries(OsFile& file, const OsFile& spool,
                           const std::vector<StoredEntry>& entries) {
  ArchiveOutput output(file);
  std::deque<EntryInput> packed;
  std::deque<FileInput> unpacked;
  ReadBuffer buffer;
  // Declared last: when it is given up, it still calls its sources.
  Zip zip = NewZip(output);
  if (!zip) return ArchiveResult::kOutOfMemory;
  for (const StoredEntry& entry : entries) {
    const bool added = entry.source.empty()
                           ? AddEntry(zip.get(), packed.emplace_back(spool, entry), entry)
                           : AddEntry(zip.get(), unpacked.emplace_back(entry, buffer), entry);
    if (!added) return ArchiveResult::kOutOfMemory;
  }
  if (zip_close(zip.get()) == 0) {
    static_cast<void>(zip.release());  // closing has freed it
    return ArchiveResult::kDone;
  }
  return ResultOfFailure(zip_error_code_zip(zip_get_error(zip.get())), output.Status());
}

// libzip would remove an archive without entries. It consists of nothing but its end record.
ArchiveResult WriteEmptyArchive(OsFile& file) {
  constexpr std::array<std::uint8_t, 22> kEndRecord = {'P', 'K', 5, 6};
  return ResultOfWriting(file.WriteAt(0, kEndRecord));
}

}  // namespace

ArchiveResult WriteArchiveFile(const std::filesystem::path& archive, const OsFile& spool,
                               const std::vector<StoredEntry>& entries, Durability durability) {
  PartFile part;
  FileStatus status = part.CreateForArchive(archive);
  if (status != FileStatus::kDone) return ResultOfWriting(status);
  const ArchiveResult result =
      entries.empty() ? WriteEmptyArchive(part.File()) : WriteEntries(part.File(), spool, entries);
  if (result != ArchiveResult::kDone) return result;
  if (durability == Durability::kFlushed) status = part.File().FlushToDisk();
  return ResultOfWriting(status == FileStatus::kDone ? part.Complete() : status);
}

}  // namespace carrovan
