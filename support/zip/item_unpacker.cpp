#include "support/zip/item_unpacker.h"

#include <libdeflate.h>

#include <new>

#include "support/zip/buffer_size.h"

namespace carrovan {
namespace {

using OpenItem = std::unique_ptr<zip_file_t, decltype(&zip_fclose)>;

ArchiveResult ResultOf(zip_error_t* error) {
  return zip_error_code_zip(error) == ZIP_ER_MEMORY ? ArchiveResult::kOutOfMemory
                                                    : ArchiveResult::kDamaged;
}

// Whether an item is one that can be unpacked at all.
ArchiveResult CheckKind(const zip_stat_t& item) {
  constexpr zip_uint64_t kNeeded =
      ZIP_STAT_SIZE | ZIP_STAT_COMP_SIZE | ZIP_STAT_COMP_METHOD | ZIP_STAT_ENCRYPTION_METHOD;
  if ((item.valid & kNeeded) != kNeeded) return ArchiveResult::kDamaged;
  if (item.encryption_method != ZIP_EM_NONE) return ArchiveResult::kEncrypted;
  if (item.comp_method == ZIP_CM_DEFLATE) return ArchiveResult::kDone;
  if (item.comp_method != ZIP_CM_STORE) return ArchiveResult::kMethodUnsupported;
  return item.size == item.comp_size ? ArchiveResult::kDone : ArchiveResult::kDamaged;
}

}  // namespace

ItemUnpacker::ItemUnpacker(zip_t* zip)
    : zip_(zip),
      packed_(std::make_unique_for_overwrite<std::uint8_t[]>(kBufferBytes)),
      content_(std::make_unique_for_overwrite<std::uint8_t[]>(kBufferBytes)),
      decompressor_(libdeflate_alloc_decompressor(), libdeflate_free_decompressor) {
  if (!decompressor_) throw std::bad_alloc();
}

ItemUnpacker::~ItemUnpacker() = default;

ArchiveResult ItemUnpacker::Unpack(zip_uint64_t index, const Sink& sink) {
  zip_stat_t item = {};
  if (zip_stat_index(zip_, index, 0, &item) != 0) return ArchiveResult::kDamaged;
  const ArchiveResult kind = CheckKind(item);
  if (kind != ArchiveResult::kDone) return kind;
  const bool fits = item.size <= kBufferBytes && item.comp_size <= kBufferBytes;
  return fits ? UnpackWhole(item, sink) : UnpackStream(item, sink);
}

ArchiveResult ItemUnpacker::UnpackWhole(const zip_stat_t& item, const Sink& sink) {
  const OpenItem file(zip_fopen_index(zip_, item.index, ZIP_FL_COMPRESSED), zip_fclose);
  if (!file) return ResultOf(zip_get_error(zip_));
  const zip_int64_t length = zip_fread(file.get(), packed_.get(), item.comp_size);
  if (length < 0) return ResultOf(zip_file_get_error(file.get()));
  if (static_cast<zip_uint64_t>(length) != item.comp_size) return ArchiveResult::kDamaged;

  const std::uint8_t* content = packed_.get();
  if (item.comp_method == ZIP_CM_DEFLATE) {
    content = content_.get();
    // Without a place for the actual size, content of any other size than this is a failure.
    if (libdeflate_deflate_decompress(decompressor_.get(), packed_.get(), item.comp_size,
                                      content_.get(), item.size, nullptr) != LIBDEFLATE_SUCCESS) {
      return ArchiveResult::kDamaged;
    }
  }
  if (libdeflate_crc32(0, content, item.size) != item.crc) return ArchiveResult::kDamaged;
  if (item.size == 0) return ArchiveResult::kDone;
  return sink({content, static_cast<std::size_t>(item.size)});
}

ArchiveResult ItemUnpacker::UnpackStream(const zip_stat_t& item, const Sink& sink) {
  const OpenItem file(zip_fopen_index(zip_, item.index, 0), zip_fclose);
  if (!file) return ResultOf(zip_get_error(zip_));
  zip_uint64_t done = 0;
  std::uint32_t checksum = 0;
  for (;;) {
    const zip_int64_t read = zip_fread(file.get(), content_.get(), kBufferBytes);
    if (read < 0) return ResultOf(zip_file_get_error(file.get()));
    if (read == 0) break;
    const auto length = static_cast<std::size_t>(read);
    if (length > item.size - done) return ArchiveResult::kDamaged;
    checksum = libdeflate_crc32(checksum, content_.get(), length);
    done += length;
    const ArchiveResult taken = sink({content_.get(), length});
    if (taken != ArchiveResult::kDone) return taken;
  }
  return done == item.size && checksum == item.crc ? ArchiveResult::kDone : ArchiveResult::kDamaged;
}

}  // namespace carrovan
