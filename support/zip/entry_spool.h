#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <memory>
#include <span>

#include "platform/archive_library.h"
#include "support/files/os_file.h"
#include "support/zip/archive_layout.h"
#include "support/zip/work_ahead.h"

struct libdeflate_compressor;

namespace carrovan {

// Opens a file for an entry and notes its time; kSourceMissing or kSourceUnreadable when it cannot.
[[nodiscard]] ArchiveResult OpenSource(const std::filesystem::path& source, OsFile& file,
                                       StoredEntry& entry);

// Packs files one after the other into a nameless file, so that memory holds two buffers' worth
// however large the files are, and nothing is left if the process dies. Files that are expected are
// read and packed ahead by several threads; the nameless file is written by the caller's alone.
class EntrySpool {
 public:
  // Null when nothing can be created in the folder.
  static std::unique_ptr<EntrySpool> Create(const std::filesystem::path& folder);

  ~EntrySpool();
  EntrySpool(const EntrySpool&) = delete;
  EntrySpool& operator=(const EntrySpool&) = delete;

  // How many threads pack what is expected; 1 at first. Called before anything is stored.
  void UseThreads(unsigned threads);

  // The file will be stored after those that were expected before it.
  void Expect(const std::filesystem::path& source);

  // Packs the file's content to its end, whatever its size was before, and fills everything in the
  // entry but its name. On failure the spool is as it was.
  [[nodiscard]] ArchiveResult Store(const std::filesystem::path& source, StoredEntry& entry);

  // Where the packed content of all entries is read from.
  const OsFile& File() const { return file_; }

 private:
  class Packing;
  using Compressor =
      std::unique_ptr<libdeflate_compressor, void (*)(libdeflate_compressor* compressor)>;

  struct Expected {
    std::filesystem::path source;
    const Packing* packing;
  };

  EntrySpool();

  void Begin(const std::filesystem::path& source);
  void BringToFront(const std::filesystem::path& source);
  void DropFirst();
  ArchiveResult StoreFirst(StoredEntry& entry);
  ArchiveResult StoreStream(const std::filesystem::path& source, StoredEntry& entry);
  ArchiveResult Append(std::span<const std::uint8_t> packed, StoredEntry& entry);

  OsFile file_;
  std::uint64_t endOffset_ = 0;
  ToolBox<Compressor> compressors_;
  std::deque<Expected> expected_;
  unsigned threads_ = 1;
  std::unique_ptr<WorkAhead> ahead_;  // last: its threads use the rest
};

}  // namespace carrovan
