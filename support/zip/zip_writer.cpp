#include "support/zip/zip_writer.h"

#include <algorithm>
#include <new>
#include <set>
#include <utility>
#include <vector>

#include "support/zip/archive_layout.h"
#include "support/zip/entry_spool.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr std::size_t kLongestName = 0xFFFF;  // in bytes, as the format counts it

}  // namespace

class ZipWriter::Contents {
 public:
  Contents(std::filesystem::path archive, std::unique_ptr<EntrySpool> spool)
      : archive_(std::move(archive)), spool_(std::move(spool)) {}

  ArchiveResult Add(const std::wstring& entryName, const std::filesystem::path& source) {
    std::string nameUtf8 = ToUtf8(entryName);
    std::replace(nameUtf8.begin(), nameUtf8.end(), '/', '\\');
    // Read back, as names that differ outside of Unicode only are stored as one.
    std::wstring name = FromUtf8(nameUtf8);
    if (nameUtf8.size() > kLongestName || name.ends_with(L'\\') || RefusalOfStoredName(name) ||
        names_.contains(name)) {
      return ArchiveResult::kNameRefused;
    }

    StoredEntry entry;
    const ArchiveResult result =
        compresses_ ? spool_->Store(source, entry) : NoteSource(source, entry);
    if (result != ArchiveResult::kDone) return result;
    entry.nameUtf8 = std::move(nameUtf8);
    names_.insert(std::move(name));
    entries_.push_back(std::move(entry));
    return ArchiveResult::kDone;
  }

  void StoreUncompressed() { compresses_ = false; }

  void UseThreads(unsigned threads) { spool_->UseThreads(threads); }

  void Expect(const std::filesystem::path& source) {
    if (compresses_) spool_->Expect(source);
  }

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

  // The file is read when the archive is closed.
  static ArchiveResult NoteSource(const std::filesystem::path& source, StoredEntry& entry) {
    OsFile file;
    entry.source = AbsolutePath(source);
    return OpenSource(source, file, entry);
  }

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

void ZipWriter::UseThreads(unsigned threads) { contents_->UseThreads(threads); }

void ZipWriter::Expect(const std::filesystem::path& source) {
  try {
    contents_->Expect(source);
  } catch (const std::bad_alloc&) {
    // Adding the file finds that out again.
  }
}

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
