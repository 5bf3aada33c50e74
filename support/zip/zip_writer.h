#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>

#include "platform/archive_library.h"
#include "support/files/os_file.h"
#include "support/zip/archive_layout.h"

struct libdeflate_compressor;

namespace carrovan {

// What a failure to write a file means to whoever asked for the file.
inline ArchiveResult ResultOfWriting(FileStatus status) {
  if (status == FileStatus::kDone) return ArchiveResult::kDone;
  return status == FileStatus::kDiskFull ? ArchiveResult::kDiskFull
                                         : ArchiveResult::kTargetNotWritable;
}

// Packs files one after the other into a nameless file, so that memory holds one buffer's worth
// however large the files are, and nothing is left if the process dies.
class EntrySpool {
 public:
  // Null when nothing can be created in the folder.
  static std::unique_ptr<EntrySpool> Create(const std::filesystem::path& folder);

  ~EntrySpool();
  EntrySpool(const EntrySpool&) = delete;
  EntrySpool& operator=(const EntrySpool&) = delete;

  // Packs the file's content to its end, whatever its size was before, and fills everything in the
  // entry but its name and time. On failure the spool is as it was.
  [[nodiscard]] ArchiveResult Store(const OsFile& source, StoredEntry& entry);

  // Where the packed content of all entries is read from.
  const OsFile& File() const { return file_; }

 private:
  using Buffer = std::unique_ptr<std::uint8_t[]>;

  EntrySpool();

  ArchiveResult StoreWhole(std::span<const std::uint8_t> content, StoredEntry& entry);
  ArchiveResult StoreStream(const OsFile& source, StoredEntry& entry);
  ArchiveResult Append(std::span<const std::uint8_t> packed, StoredEntry& entry);

  OsFile file_;
  std::uint64_t endOffset_ = 0;
  Buffer content_;
  Buffer packed_;
  std::unique_ptr<libdeflate_compressor, void (*)(libdeflate_compressor*)> compressor_;
};

// Writes a zip archive that other programs can read: plain deflate, names in UTF-8 with
// backslashes, modification times kept, ZIP64 where it is needed. Memory does not grow with the
// size of the files. Until Close succeeds the archive at the path stays as it was, even when the
// process is killed.
class ZipWriter {
 public:
  // Null when nothing can be created in the archive's folder, when the path is a folder, or when
  // the archive that is there is read-only.
  static std::unique_ptr<ZipWriter> Create(const std::filesystem::path& archive);

  // A writer that was not closed leaves nothing behind.
  ~ZipWriter();
  ZipWriter(const ZipWriter&) = delete;
  ZipWriter& operator=(const ZipWriter&) = delete;

  // What is added from now on is stored as it is and read when the archive is closed, not before:
  // no byte is moved twice, and the archive is not flushed to disk. One that cannot be read then
  // fails the whole archive.
  void StoreUncompressed();

  // Reads a regular file whole and stores it; what cannot be read whole is not stored, and the
  // writer goes on. The name is refused when it is empty, unfit for a file (RefusalOfStoredName)
  // or, without regard to case, stored already.
  [[nodiscard]] ArchiveResult Add(const std::wstring& entryName,
                                  const std::filesystem::path& source);

  // Writes the archive to a sibling (the archive's name + ".part"), flushes it and renames it over
  // the archive. On failure the sibling is gone and the archive is as it was. Called once, last.
  [[nodiscard]] ArchiveResult Close();

 private:
  class Contents;

  explicit ZipWriter(std::unique_ptr<Contents> contents);

  std::unique_ptr<Contents> contents_;
};

}  // namespace carrovan
