#include "support/zip/entry_spool.h"

#include <libdeflate.h>
#include <zlib.h>

#include <algorithm>
#include <new>
#include <utility>

namespace carrovan {
namespace {

// Measured on settings: smaller than zip -6 in less than half its time; higher levels gain next to
// nothing.
constexpr int kWholeLevel = 6;
constexpr int kStreamLevel = 6;

// Of a stream's content, and of what it becomes.
constexpr std::size_t kPieceBytes = std::size_t{1} << 20;

// A raw deflate stream of zlib.
class DeflateStream {
 public:
  DeflateStream() {
    constexpr int kRawWindowBits = -15;
    constexpr int kMemoryLevel = 8;
    if (deflateInit2(&stream_, kStreamLevel, Z_DEFLATED, kRawWindowBits, kMemoryLevel,
                     Z_DEFAULT_STRATEGY) != Z_OK) {
      throw std::bad_alloc();
    }
  }
  ~DeflateStream() { deflateEnd(&stream_); }
  DeflateStream(const DeflateStream&) = delete;
  DeflateStream& operator=(const DeflateStream&) = delete;

  // The input of the following calls of Pack; the data must live until they are done.
  void Feed(std::span<std::uint8_t> content) {
    stream_.next_in = content.data();
    stream_.avail_in = static_cast<uInt>(content.size());
  }

  // How many bytes of the buffer were filled. A full buffer means that there may be more to come.
  std::size_t Pack(std::span<std::uint8_t> packed, bool isLastInput) {
    stream_.next_out = packed.data();
    stream_.avail_out = static_cast<uInt>(packed.size());
    deflate(&stream_, isLastInput ? Z_FINISH : Z_NO_FLUSH);
    return packed.size() - stream_.avail_out;
  }

 private:
  z_stream stream_ = {};
};

}  // namespace

ArchiveResult OpenSource(const std::filesystem::path& source, OsFile& file, StoredEntry& entry) {
  const FileStatus status = file.OpenToRead(source);
  if (status == FileStatus::kMissing) return ArchiveResult::kSourceMissing;
  const auto facts = status == FileStatus::kDone ? file.Facts() : std::nullopt;
  if (!facts) return ArchiveResult::kSourceUnreadable;
  entry.modifiedSeconds = facts->modifiedSeconds;
  entry.sizeBytes = facts->sizeBytes;
  return ArchiveResult::kDone;
}

// A file that is packed in one call. One that is too long for that, or longer than the system said,
// is left to be streamed: what becomes of a file does not depend on who packs it.
class EntrySpool::Packing : public WorkAhead::Task {
 public:
  Packing(std::filesystem::path source, ToolBox<Compressor>& compressors)
      : source_(std::move(source)), compressors_(compressors) {}

  ArchiveResult Result() const { return result_; }
  bool IsToBeStreamed() const { return isToBeStreamed_; }
  const StoredEntry& Entry() const { return entry_; }

  std::size_t Prepare() override {
    result_ = OpenSource(source_, file_, entry_);
    if (result_ != ArchiveResult::kDone) return 0;
    isToBeStreamed_ = entry_.sizeBytes >= kBufferBytes;
    if (isToBeStreamed_) {
      file_.Close();
      return 0;
    }
    // First what is packed, then the content, with a byte more that shows where it ends.
    return 2 * static_cast<std::size_t>(entry_.sizeBytes) + 1;
  }

  std::size_t Run(std::span<std::uint8_t> memory) override {
    if (!file_.IsOpen()) return 0;
    const std::span<std::uint8_t> content = memory.subspan(memory.size() / 2);
    const auto length = file_.ReadAt(0, content);
    file_.Close();
    if (!length) result_ = ArchiveResult::kSourceUnreadable;
    isToBeStreamed_ = length == content.size();
    return length && !isToBeStreamed_ ? Pack(content.first(*length), memory) : 0;
  }

 private:
  std::size_t Pack(std::span<const std::uint8_t> content, std::span<std::uint8_t> target) {
    entry_.sizeBytes = content.size();
    entry_.checksum = libdeflate_crc32(0, content.data(), content.size());
    if (content.empty()) return 0;
    Compressor compressor = compressors_.Take([] {
      Compressor made(libdeflate_alloc_compressor(kWholeLevel), libdeflate_free_compressor);
      if (!made) throw std::bad_alloc();
      return made;
    });
    const std::size_t packedLength = libdeflate_deflate_compress(
        compressor.get(), content.data(), content.size(), target.data(), content.size() - 1);
    compressors_.PutBack(std::move(compressor));
    entry_.isDeflated = packedLength != 0;
    if (entry_.isDeflated) return packedLength;
    std::ranges::copy(content, target.begin());
    return content.size();
  }

  const std::filesystem::path source_;
  ToolBox<Compressor>& compressors_;
  OsFile file_;
  StoredEntry entry_;
  ArchiveResult result_ = ArchiveResult::kDone;
  bool isToBeStreamed_ = false;
};

EntrySpool::EntrySpool() = default;

EntrySpool::~EntrySpool() = default;

std::unique_ptr<EntrySpool> EntrySpool::Create(const std::filesystem::path& folder) {
  std::unique_ptr<EntrySpool> spool(new EntrySpool());
  if (spool->file_.CreateNameless(folder) != FileStatus::kDone) return nullptr;
  return spool;
}

void EntrySpool::UseThreads(unsigned threads) { threads_ = threads; }

void EntrySpool::Expect(const std::filesystem::path& source) {
  if (threads_ > 1) Begin(source);
}

void EntrySpool::Begin(const std::filesystem::path& source) {
  if (!ahead_) ahead_ = std::make_unique<WorkAhead>(threads_, 2 * kBufferBytes);
  auto packing = std::make_unique<Packing>(source, compressors_);
  expected_.push_back({source, packing.get()});
  try {
    ahead_->Add(std::move(packing));
  } catch (...) {
    expected_.pop_back();
    throw;
  }
}

// A file that was not expected ends what was.
void EntrySpool::BringToFront(const std::filesystem::path& source) {
  const auto isIt = [&](const Expected& file) { return file.source.native() == source.native(); };
  if (std::ranges::none_of(expected_, isIt)) {
    while (!expected_.empty()) DropFirst();
    Begin(source);
  }
  while (!isIt(expected_.front())) DropFirst();
}

void EntrySpool::DropFirst() {
  expected_.pop_front();
  ahead_->DropFirst();
}

ArchiveResult EntrySpool::Store(const std::filesystem::path& source, StoredEntry& entry) {
  BringToFront(source);
  struct Drop {
    EntrySpool& spool;
    ~Drop() { spool.DropFirst(); }
  };
  const Drop drop{*this};
  const ArchiveResult result = StoreFirst(entry);
  // What a failure wrote lies behind the end and is written over by the next file.
  if (result == ArchiveResult::kDone) endOffset_ += entry.packedSizeBytes;
  return result;
}

ArchiveResult EntrySpool::StoreFirst(StoredEntry& entry) {
  const auto& [source, packing] = expected_.front();
  const std::span<const std::uint8_t> packed = ahead_->FinishFirst();
  if (packing->Result() != ArchiveResult::kDone) return packing->Result();
  entry = packing->Entry();
  entry.spoolOffset = endOffset_;
  return packing->IsToBeStreamed() ? StoreStream(source, entry) : Append(packed, entry);
}

ArchiveResult EntrySpool::StoreStream(const std::filesystem::path& source, StoredEntry& entry) {
  OsFile file;
  const ArchiveResult opened = OpenSource(source, file, entry);
  if (opened != ArchiveResult::kDone) return opened;
  const auto content = std::make_unique_for_overwrite<std::uint8_t[]>(kPieceBytes);
  const auto packed = std::make_unique_for_overwrite<std::uint8_t[]>(kPieceBytes);
  DeflateStream stream;
  entry.isDeflated = true;
  entry.sizeBytes = 0;
  entry.checksum = libdeflate_crc32(0, nullptr, 0);
  for (;;) {
    const auto length = file.ReadAt(entry.sizeBytes, {content.get(), kPieceBytes});
    if (!length) return ArchiveResult::kSourceUnreadable;
    const bool isLast = *length < kPieceBytes;
    entry.sizeBytes += *length;
    entry.checksum = libdeflate_crc32(entry.checksum, content.get(), *length);
    stream.Feed({content.get(), *length});
    std::size_t packedLength = kPieceBytes;
    while (packedLength == kPieceBytes) {
      packedLength = stream.Pack({packed.get(), kPieceBytes}, isLast);
      const ArchiveResult result = Append({packed.get(), packedLength}, entry);
      if (result != ArchiveResult::kDone) return result;
    }
    if (isLast) return ArchiveResult::kDone;
  }
}

ArchiveResult EntrySpool::Append(std::span<const std::uint8_t> packed, StoredEntry& entry) {
  const ArchiveResult result =
      ResultOfWriting(file_.WriteAt(endOffset_ + entry.packedSizeBytes, packed));
  if (result == ArchiveResult::kDone) entry.packedSizeBytes += packed.size();
  return result;
}

}  // namespace carrovan
