#include "support/zip/zip_writer.h"

#include <algorithm>
#include <new>
#include <set>
#include <utility>
#include <vector>

#include "platform/stored_name.h"
#include "platform/text.h"
#include "support/zip/archive_file.h"
#include "support/zip/entry_spool.h"

namespace carrovan {
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
