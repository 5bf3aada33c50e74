#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <span>

#include "platform/archive_library.h"
#include "support/zip/work_ahead.h"

struct libdeflate_decompressor;
struct zip;
struct zip_stat;

namespace carrovan {

// Reads items' content out of an open archive and proves it against the declared size and checksum.
// Never holds more than two buffers, which grow with the items up to kBufferBytes each, and never
// hands on more than an item declares. Items that are expected are unpacked ahead by several
// threads, in memory of the same size.
class ItemUnpacker {
 public:
  // Takes content piece by piece; what it returns, if not kDone, ends the item.
  using Sink = std::function<ArchiveResult(std::span<const std::uint8_t>)>;

  // libzip works for one thread at a time: whoever calls it while items are expected holds
  // `access`.
  ItemUnpacker(zip* zip, std::mutex& access);
  ~ItemUnpacker();
  ItemUnpacker(const ItemUnpacker&) = delete;
  ItemUnpacker& operator=(const ItemUnpacker&) = delete;

  // How many threads unpack what is expected; 1 at first. Called before anything is.
  void UseThreads(unsigned threads) { threads_ = threads; }

  // The item will be unpacked after those that were expected before it.
  void Expect(std::uint64_t index);

  // An empty item is no piece at all. Only the result says whether what the sink was given is the
  // item's content. Called without `access`.
  [[nodiscard]] ArchiveResult Unpack(std::uint64_t index, const Sink& sink);

 private:
  class Unpacking;
  using Decompressor =
      std::unique_ptr<libdeflate_decompressor, void (*)(libdeflate_decompressor* decompressor)>;

  // Bytes that are written before they are read. It grows with what it is asked for.
  class Buffer {
   public:
    // Room for as many bytes, up to two buffers; what was in it may be lost.
    std::span<std::uint8_t> Of(std::size_t bytes);

   private:
    std::unique_ptr<std::uint8_t[]> bytes_;
    std::size_t size_ = 0;
  };

  struct Expected {
    std::uint64_t index;
    const Unpacking* unpacking;
  };

  void Begin(std::uint64_t index);
  void DropFirst();
  ArchiveResult UnpackAhead(std::uint64_t index, const Sink& sink);
  ArchiveResult UnpackNow(std::uint64_t index, const Sink& sink);
  ArchiveResult UnpackStream(const struct zip_stat& item, const Sink& sink);

  zip* zip_;
  std::mutex& access_;
  Buffer memory_;
  ToolBox<Decompressor> decompressors_;
  std::deque<Expected> expected_;
  unsigned threads_ = 1;
  std::unique_ptr<WorkAhead> ahead_;  // last: its threads use the rest
};

}  // namespace carrovan
