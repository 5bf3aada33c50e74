#pragma once

#include <zip.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "support/files/os_file.h"
#include "support/zip/archive_layout.h"

namespace carrovan {

// Sources through which libzip reads and writes: it never opens a file itself. Each is handed to
// libzip as a function and `this`; libzip neither owns nor copies it.

// An archive that is read.
class ArchiveInput {
 public:
  // Null when the file is missing or cannot be read.
  static std::unique_ptr<ArchiveInput> Open(const std::filesystem::path& path);

  // The archive begins here in its file. Called before it is read.
  void StartAt(std::uint64_t offset);

  const OsFile& File() const { return file_; }

  static zip_int64_t Call(void* self, void* data, zip_uint64_t length, zip_source_cmd_t command);

  std::uint64_t SizeBytes() const { return sizeBytes_; }

 private:
  zip_int64_t Seek(void* data, zip_uint64_t length);
  zip_int64_t Describe(void* data) const;

  OsFile file_;
  std::uint64_t startOffset_ = 0;
  std::uint64_t sizeBytes_ = 0;  // from there on
  std::uint64_t position_ = 0;
  zip_error_t error_ = {};
};

// An archive that is written from nothing, into a file that outlives the source. What libzip writes
// in small pieces reaches the file in large ones.
class ArchiveOutput {
 public:
  explicit ArchiveOutput(OsFile& file) : file_(file) { pending_.reserve(kPieceBytes); }

  static zip_int64_t Call(void* self, void* data, zip_uint64_t length, zip_source_cmd_t command);

  // How the last write ended.
  FileStatus Status() const { return status_; }

 private:
  static constexpr std::size_t kPieceBytes = std::size_t{1} << 18;

  zip_int64_t Write(std::span<const std::uint8_t> data);
  zip_int64_t Seek(void* data, zip_uint64_t length);
  zip_int64_t Flush();
  bool Put(std::span<const std::uint8_t> data);

  OsFile& file_;
  std::uint64_t sizeBytes_ = 0;
  std::uint64_t position_ = 0;
  std::vector<std::uint8_t> pending_;  // written up to the position, not yet in the file
  FileStatus status_ = FileStatus::kDone;
  zip_error_t error_ = {};
};

// An entry's packed content in the spool; both outlive the source. Its description says that it is
// packed already, so that libzip copies it as it is.
class EntryInput {
 public:
  EntryInput(const OsFile& spool, const StoredEntry& entry) : spool_(spool), entry_(entry) {}

  static zip_int64_t Call(void* self, void* data, zip_uint64_t length, zip_source_cmd_t command);

 private:
  zip_int64_t Describe(void* data) const;

  const OsFile& spool_;
  const StoredEntry& entry_;
  std::uint64_t position_ = 0;
  zip_error_t error_ = {};
};

// A buffer that one source after the other reads ahead into; libzip reads one at a time, in small
// pieces.
using ReadBuffer = std::array<std::uint8_t, std::size_t{1} << 18>;

// A file that is stored as it is; the entry and the buffer outlive the source. It is open only
// while it is read.
class FileInput {
 public:
  FileInput(const StoredEntry& entry, ReadBuffer& buffer) : entry_(entry), buffer_(buffer) {}

  static zip_int64_t Call(void* self, void* data, zip_uint64_t length, zip_source_cmd_t command);

 private:
  zip_int64_t Open();
  zip_int64_t Read(std::span<std::uint8_t> target);
  zip_int64_t Describe(void* data) const;

  const StoredEntry& entry_;
  ReadBuffer& buffer_;
  OsFile file_;
  std::uint64_t offset_ = 0;             // in the file, of what comes after the buffer
  std::span<const std::uint8_t> ahead_;  // in the buffer, not yet handed out
  zip_error_t error_ = {};
};

}  // namespace carrovan
