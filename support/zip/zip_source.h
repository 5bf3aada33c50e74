#pragma once

#include <zip.h>

#include <cstdint>
#include <filesystem>
#include <memory>

#include "support/zip/os_file.h"
#include "support/zip/stored_entry.h"

namespace carrovan {

// Sources through which libzip reads and writes: it never opens a file itself. Each is handed to
// libzip as a function and `this`; libzip neither owns nor copies it.

// An archive that is read.
class ArchiveInput {
 public:
  // Null when the file is missing or cannot be read.
  static std::unique_ptr<ArchiveInput> Open(const std::filesystem::path& path);

  static zip_int64_t Call(void* self, void* data, zip_uint64_t length, zip_source_cmd_t command);

 private:
  zip_int64_t Seek(void* data, zip_uint64_t length);
  zip_int64_t Describe(void* data) const;

  OsFile file_;
  std::uint64_t sizeBytes_ = 0;
  std::uint64_t position_ = 0;
  zip_error_t error_ = {};
};

// An archive that is written from nothing, into a file that outlives the source.
class ArchiveOutput {
 public:
  explicit ArchiveOutput(OsFile& file) : file_(file) {}

  static zip_int64_t Call(void* self, void* data, zip_uint64_t length, zip_source_cmd_t command);

  // How the last write ended.
  FileStatus Status() const { return status_; }

 private:
  zip_int64_t Write(const void* data, zip_uint64_t length);
  zip_int64_t Seek(void* data, zip_uint64_t length);

  OsFile& file_;
  std::uint64_t sizeBytes_ = 0;
  std::uint64_t position_ = 0;
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

}  // namespace carrovan
