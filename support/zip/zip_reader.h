#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "platform/archive_library.h"

struct libdeflate_decompressor;
struct zip;
struct zip_stat;

namespace carrovan {

// Reads items' content out of an open archive and proves it against the declared size and checksum.
// Never holds more than two buffers, which grow with the items up to kBufferBytes each, and never
// hands on more than an item declares.
class ItemUnpacker {
 public:
  // Takes content piece by piece; what it returns, if not kDone, ends the item.
  using Sink = std::function<ArchiveResult(std::span<const std::uint8_t>)>;

  explicit ItemUnpacker(zip* zip);
  ~ItemUnpacker();
  ItemUnpacker(const ItemUnpacker&) = delete;
  ItemUnpacker& operator=(const ItemUnpacker&) = delete;

  // An empty item is no piece at all. Only the result says whether what the sink was given is the
  // item's content.
  [[nodiscard]] ArchiveResult Unpack(std::uint64_t index, const Sink& sink);

 private:
  // Bytes that are written before they are read. It grows with what it is asked for.
  class Buffer {
   public:
    // Room for as many bytes, up to kBufferBytes; what was in it may be lost.
    std::uint8_t* Of(std::uint64_t bytes);

   private:
    std::unique_ptr<std::uint8_t[]> bytes_;
    std::uint64_t size_ = 0;
  };

  ArchiveResult UnpackWhole(const struct zip_stat& item, const Sink& sink);
  ArchiveResult UnpackStream(const struct zip_stat& item, const Sink& sink);

  zip* zip_;
  Buffer packed_;
  Buffer content_;
  std::unique_ptr<libdeflate_decompressor, void (*)(libdeflate_decompressor*)> decompressor_;
};

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
