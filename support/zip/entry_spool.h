#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>

#include "platform/archive_library.h"
#include "support/zip/os_file.h"
#include "support/zip/stored_entry.h"

struct libdeflate_compressor;

namespace carrovan {

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

}  // namespace carrovan
