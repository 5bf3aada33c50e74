#pragma once

#include <zip.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <span>

#include "platform/archive_library.h"

struct libdeflate_decompressor;

namespace carrovan {

// Reads items' content out of an open archive and proves it against the declared size and checksum.
// Never holds more than one buffer's worth, and never hands on more than an item declares.
class ItemUnpacker {
 public:
  // Takes content piece by piece; what it returns, if not kDone, ends the item.
  using Sink = std::function<ArchiveResult(std::span<const std::uint8_t>)>;

  explicit ItemUnpacker(zip_t* zip);
  ~ItemUnpacker();
  ItemUnpacker(const ItemUnpacker&) = delete;
  ItemUnpacker& operator=(const ItemUnpacker&) = delete;

  // An empty item is no piece at all. Only the result says whether what the sink was given is the
  // item's content.
  [[nodiscard]] ArchiveResult Unpack(zip_uint64_t index, const Sink& sink);

 private:
  using Buffer = std::unique_ptr<std::uint8_t[]>;

  ArchiveResult UnpackWhole(const zip_stat_t& item, const Sink& sink);
  ArchiveResult UnpackStream(const zip_stat_t& item, const Sink& sink);

  zip_t* zip_;
  Buffer packed_;
  Buffer content_;
  std::unique_ptr<libdeflate_decompressor, void (*)(libdeflate_decompressor*)> decompressor_;
};

}  // namespace carrovan
