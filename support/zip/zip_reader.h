#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "platform/archive_library.h"

namespace carrovan {

// Reads a zip archive that may come from a stranger: no size or name that it declares is believed.
// Items are numbered from 0 in stored order.
class ZipReader {
 public:
  // Null when the file is missing, cannot be read or is not a zip archive.
  static std::unique_ptr<ZipReader> Open(const std::filesystem::path& archive);

  ~ZipReader();
  ZipReader(const ZipReader&) = delete;
  ZipReader& operator=(const ZipReader&) = delete;

  // Nothing past the last item. The sizes are those that the archive declares.
  std::optional<ArchiveItem> Item(std::size_t index) const;

  // How many threads unpack items that are expected; 1 at first. The files are the same with any
  // number. Called before anything is read.
  void UseThreads(unsigned threads);

  // The item will be extracted after those that were expected before it, so it may be unpacked into
  // memory already. One that never is does no harm.
  void Expect(std::size_t index);

  // Writes an item to a file with its modification time, creating missing parent folders. A file
  // that is there is replaced only once the item is complete and its checksum matches; a read-only
  // one stays. An item whose stored name is unfit (RefusalOfStoredName) is refused before anything
  // is made. An item whose name ends in a separator becomes a folder.
  [[nodiscard]] ArchiveResult Extract(std::size_t index, const std::filesystem::path& target);

  // The item's content; nothing when it is longer than the limit or does not pass Check.
  std::optional<std::vector<std::uint8_t>> Read(std::size_t index, std::size_t limitBytes);

  // Hands an item's content on part by part, never more than it declares. What was handed on is the
  // item's content only if the result says so.
  using TakePart = ArchiveExaminer::TakePart;
  [[nodiscard]] ArchiveResult ReadInParts(std::size_t index, const TakePart& take);

  // Reads an item whole and compares its size and checksum.
  [[nodiscard]] ArchiveResult Check(std::size_t index);

  // See ArchiveExaminer.
  std::optional<std::wstring> HeaderProblem(std::size_t index);

  std::uint64_t SizeBytes() const;

 private:
  class Archive;

  explicit ZipReader(std::unique_ptr<Archive> archive);

  std::unique_ptr<Archive> archive_;
};

}  // namespace carrovan
