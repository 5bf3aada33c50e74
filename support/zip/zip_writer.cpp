#include "support/zip/zip_writer.h"

#include <libdeflate.h>
#include <zlib.h>
#include <algorithm>
#include <new>
#include <set>
#include <utility>
#include <vector>

#include "support/zip/archive_layout.h"
#include "support/zip/zip_source.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

// Measured on settings: smaller than zip -6 in less than half its time; higher levels gain next to
// nothing.
constexpr int kWholeLevel = 6;
constexpr int kStreamLevel = 6;

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

EntrySpool::EntrySpool()
    : content_(std::make_unique_for_overwrite<std::uint8_t[]>(kBufferBytes)),
      packed_(std::make_unique_for_overwrite<std::uint8_t[]>(kBufferBytes)),
      compressor_(libdeflate_alloc_compressor(kWholeLevel), libdeflate_free_compressor) {
  if (!compressor_) throw std::bad_alloc();
}

EntrySpool::~EntrySpool() = default;

std::unique_ptr<EntrySpool> EntrySpool::Create(const std::filesystem::path& folder) {
  std::unique_ptr<EntrySpool> spool(new EntrySpool());
  if (spool->file_.CreateNameless(folder) != FileStatus::kDone) return nullptr;
  return spool;
}

ArchiveResult EntrySpool::Store(const OsFile& source, StoredEntry& entry) {
  entry.spoolOffset = endOffset_;
  entry.sizeBytes = 0;
  entry.packedSizeBytes = 0;
  entry.checksum = libdeflate_crc32(0, nullptr, 0);
  const auto length = source.ReadAt(0, {content_.get(), kBufferBytes});
  if (!length) return ArchiveResult::kSourceUnreadable;
  const ArchiveResult result = *length < kBufferBytes ? StoreWhole({content_.get(), *length}, entry)
                                                      : StoreStream(source, entry);
  // What a failure wrote lies behind the end and is written over by the next file.
  if (result == ArchiveResult::kDone) endOffset_ += entry.packedSizeBytes;
  return result;
}

ArchiveResult EntrySpool::StoreWhole(std::span<const std::uint8_t> content, StoredEntry& entry) {
  entry.sizeBytes = content.size();
  entry.checksum = libdeflate_crc32(0, content.data(), content.size());
  if (content.empty()) return ArchiveResult::kDone;
  const std::size_t packedLength = libdeflate_deflate_compress(
      compressor_.get(), content.data(), content.size(), packed_.get(), content.size() - 1);
  entry.isDeflated = packedLength != 0;
  return Append(
      entry.isDeflated ? std::span<const std::uint8_t>(packed_.get(), packedLength) : content,
      entry);
}

ArchiveResult EntrySpool::StoreStream(const OsFile& source, StoredEntry& entry) {
  DeflateStream stream;
  entry.isDeflated = true;
  std::size_t length = kBufferBytes;  // of the block that lies in the buffer
  for (;;) {
    const bool isLast = length < kBufferBytes;
    entry.sizeBytes += length;
    entry.checksum = libdeflate_crc32(entry.checksum, content_.get(), length);
    stream.Feed({content_.get(), length});
    std::size_t packedLength = kBufferBytes;
    while (packedLength == kBufferBytes) {
      packedLength = stream.Pack({packed_.get(), kBufferBytes}, isLast);
      const ArchiveResult result = Append({packed_.get(), packedLength}, entry);
      if (result != ArchiveResult::kDone) return result;
    }
    if (isLast) return ArchiveResult::kDone;
    const auto next = source.ReadAt(entry.sizeBytes, {content_.get(), kBufferBytes});
    if (!next) return ArchiveResult::kSourceUnreadable;
    length = *next;
  }
}

ArchiveResult EntrySpool::Append(std::span<const std::uint8_t> packed, StoredEntry& entry) {
  const ArchiveResult result =
      ResultOfWriting(file_.WriteAt(endOffset_ + entry.packedSizeBytes, packed));
  if (result == ArchiveResult::kDone) entry.packedSizeBytes += packed.size();
  return result;
}

namespace {

constexpr std::size_t kLongestName = 0xFFFF;  // in bytes, as the format counts it

}  // namespace

class ZipWriter::Contents {
 public:
  Contents(std::filesystem::path archive, std::unique_ptr<EntrySpool> spool)
      : archive_(std::move(archive)), spool_(std::move(spool)) {}

  ArchiveResult Add(const std::wstring& entryName, const std::filesystem::path& source) {
    StoredEntry entry;
    entry.nameUtf8 = ToUtf8(entryName);
    std::replace(entry.nameUtf8.begin(), entry.nameUtf8.end(), '/', '\\');
    // Read back, as names that differ outside of Unicode only are stored as one.
    std::wstring name = FromUtf8(entry.nameUtf8);
    if (entry.nameUtf8.size() > kLongestName || name.ends_with(L'\\') ||
        RefusalOfStoredName(name) || names_.contains(name)) {
      return ArchiveResult::kNameRefused;
    }

    OsFile file;
    const FileStatus status = file.OpenToRead(source);
    if (status == FileStatus::kMissing) return ArchiveResult::kSourceMissing;
    const auto facts = status == FileStatus::kDone ? file.Facts() : std::nullopt;
    if (!facts) return ArchiveResult::kSourceUnreadable;
    entry.modifiedSeconds = facts->modifiedSeconds;
    if (compresses_) {
      const ArchiveResult result = spool_->Store(file, entry);
      if (result != ArchiveResult::kDone) return result;
    } else {
      entry.source = AbsolutePath(source);
      entry.sizeBytes = facts->sizeBytes;
    }
    names_.insert(std::move(name));
    entries_.push_back(std::move(entry));
    return ArchiveResult::kDone;
  }

  void StoreUncompressed() { compresses_ = false; }

  ArchiveResult Close() {
    return WriteArchiveFile(archive_, spool_->File(), entries_,
                            compresses_ ? Durability::kFlushed : Durability::kNotFlushed);
  }

 private:
  struct NameLess {
    bool operator()(const std::wstring& a, const std::wstring& b) const {
      return CompareNames(a, b) < 0;
    }
  };

  std::filesystem::path archive_;
  bool compresses_ = true;
  std::unique_ptr<EntrySpool> spool_;
  std::vector<StoredEntry> entries_;
  std::set<std::wstring, NameLess> names_;
};

ZipWriter::ZipWriter(std::unique_ptr<Contents> contents) : contents_(std::move(contents)) {}

ZipWriter::~ZipWriter() = default;

std::unique_ptr<ZipWriter> ZipWriter::Create(const std::filesystem::path& archive) {
  // The current folder may be another one when the archive is closed.
  const std::filesystem::path absolute = AbsolutePath(archive);
  if (!absolute.has_filename() || IsFolder(absolute) || !MayReplace(absolute)) return nullptr;
  auto spool = EntrySpool::Create(absolute.parent_path());
  if (!spool) return nullptr;
  auto contents = std::make_unique<Contents>(absolute, std::move(spool));
  return std::unique_ptr<ZipWriter>(new ZipWriter(std::move(contents)));
}

void ZipWriter::StoreUncompressed() { contents_->StoreUncompressed(); }

ArchiveResult ZipWriter::Add(const std::wstring& entryName, const std::filesystem::path& source) {
  try {
    return contents_->Add(entryName, source);
  } catch (const std::bad_alloc&) {
    return ArchiveResult::kOutOfMemory;
  }
}

ArchiveResult ZipWriter::Close() {
  // Its spool goes with it.
  const std::unique_ptr<Contents> contents = std::move(contents_);
  try {
    return contents->Close();
  } catch (const std::bad_alloc&) {
    return ArchiveResult::kOutOfMemory;
  }
}

}  // namespace carrovan
