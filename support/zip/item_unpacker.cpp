#include "support/zip/item_unpacker.h"

#include <libdeflate.h>
#include <zip.h>

#include <algorithm>
#include <new>
#include <utility>

#include "support/zip/archive_layout.h"

namespace carrovan {
namespace {

// Of a stream's content.
constexpr std::size_t kPieceBytes = std::size_t{1} << 20;

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

// An item that is unpacked in one call, unless it is too large for that.
class ItemUnpacker::Unpacking : public WorkAhead::Task {
 public:
  Unpacking(ItemUnpacker& owner, std::uint64_t index) : owner_(owner), index_(index) {}

  ArchiveResult Result() const { return result_; }
  bool IsToBeStreamed() const { return isToBeStreamed_; }
  const zip_stat_t& Item() const { return item_; }

  std::size_t Prepare() override {
    const std::lock_guard lock(owner_.access_);
    const bool isThere = zip_stat_index(owner_.zip_, index_, 0, &item_) == 0;
    result_ = isThere ? CheckKind(item_) : ArchiveResult::kDamaged;
    if (result_ != ArchiveResult::kDone) return 0;
    isToBeStreamed_ = item_.size > kBufferBytes || item_.comp_size > kBufferBytes;
    if (isToBeStreamed_) return 0;
    // First the content, then what it is unpacked from.
    return static_cast<std::size_t>(IsDeflated() ? item_.size + item_.comp_size : item_.size);
  }

  std::size_t Run(std::span<std::uint8_t> memory) override {
    if (result_ != ArchiveResult::kDone || isToBeStreamed_) return 0;
    const auto content = memory.first(static_cast<std::size_t>(item_.size));
    const auto packed = memory.last(static_cast<std::size_t>(item_.comp_size));
    result_ = ReadPacked(packed);
    if (result_ != ArchiveResult::kDone) return 0;
    const bool isWhole = !IsDeflated() || Inflate(packed, content);
    const bool isSound =
        isWhole && libdeflate_crc32(0, content.data(), content.size()) == item_.crc;
    if (!isSound) result_ = ArchiveResult::kDamaged;
    return isSound ? content.size() : 0;
  }

 private:
  bool IsDeflated() const { return item_.comp_method == ZIP_CM_DEFLATE; }

  ArchiveResult ReadPacked(std::span<std::uint8_t> packed) {
    const std::lock_guard lock(owner_.access_);
    const OpenItem file(zip_fopen_index(owner_.zip_, index_, ZIP_FL_COMPRESSED), zip_fclose);
    if (!file) return ResultOf(zip_get_error(owner_.zip_));
    const zip_int64_t length = zip_fread(file.get(), packed.data(), packed.size());
    if (length < 0) return ResultOf(zip_file_get_error(file.get()));
    return static_cast<zip_uint64_t>(length) == packed.size() ? ArchiveResult::kDone
                                                              : ArchiveResult::kDamaged;
  }

  bool Inflate(std::span<const std::uint8_t> packed, std::span<std::uint8_t> content) {
    Decompressor decompressor = owner_.decompressors_.Take([] {
      Decompressor made(libdeflate_alloc_decompressor(), libdeflate_free_decompressor);
      if (!made) throw std::bad_alloc();
      return made;
    });
    // Without a place for the actual size, content of any other size than this is a failure.
    const auto result = libdeflate_deflate_decompress(
        decompressor.get(), packed.data(), packed.size(), content.data(), content.size(), nullptr);
    owner_.decompressors_.PutBack(std::move(decompressor));
    return result == LIBDEFLATE_SUCCESS;
  }

  ItemUnpacker& owner_;
  const std::uint64_t index_;
  zip_stat_t item_ = {};
  ArchiveResult result_ = ArchiveResult::kDone;
  bool isToBeStreamed_ = false;
};

// An archive of small items, of which there may be many to look at, takes little memory.
std::span<std::uint8_t> ItemUnpacker::Buffer::Of(std::size_t bytes) {
  if (!bytes_ || bytes > size_) {
    bytes_.reset();
    size_ = std::clamp(2 * size_, std::max<std::size_t>(bytes, 1), 2 * kBufferBytes);
    bytes_ = std::make_unique_for_overwrite<std::uint8_t[]>(size_);
  }
  return {bytes_.get(), bytes};
}

ItemUnpacker::ItemUnpacker(zip_t* zip, std::mutex& access) : zip_(zip), access_(access) {}

ItemUnpacker::~ItemUnpacker() = default;

void ItemUnpacker::Expect(std::uint64_t index) {
  if (threads_ > 1) Begin(index);
}

void ItemUnpacker::Begin(std::uint64_t index) {
  if (!ahead_) ahead_ = std::make_unique<WorkAhead>(threads_, 2 * kBufferBytes);
  auto unpacking = std::make_unique<Unpacking>(*this, index);
  expected_.push_back({index, unpacking.get()});
  try {
    ahead_->Add(std::move(unpacking));
  } catch (...) {
    expected_.pop_back();
    throw;
  }
}

void ItemUnpacker::DropFirst() {
  expected_.pop_front();
  ahead_->DropFirst();
}

ArchiveResult ItemUnpacker::Unpack(std::uint64_t index, const Sink& sink) {
  try {
    return ahead_ ? UnpackAhead(index, sink) : UnpackNow(index, sink);
  } catch (const std::bad_alloc&) {
    return ArchiveResult::kOutOfMemory;
  }
}

// An item that was not expected ends what was.
ArchiveResult ItemUnpacker::UnpackAhead(std::uint64_t index, const Sink& sink) {
  const auto isIt = [&](const Expected& item) { return item.index == index; };
  if (std::ranges::none_of(expected_, isIt)) {
    while (!expected_.empty()) DropFirst();
    Begin(index);
  }
  while (!isIt(expected_.front())) DropFirst();
  struct Drop {
    ItemUnpacker& unpacker;
    ~Drop() { unpacker.DropFirst(); }
  };
  const Drop drop{*this};
  const std::span<const std::uint8_t> content = ahead_->FinishFirst();
  const Unpacking& unpacking = *expected_.front().unpacking;
  if (unpacking.Result() != ArchiveResult::kDone) return unpacking.Result();
  if (unpacking.IsToBeStreamed()) return UnpackStream(unpacking.Item(), sink);
  return content.empty() ? ArchiveResult::kDone : sink(content);
}

ArchiveResult ItemUnpacker::UnpackNow(std::uint64_t index, const Sink& sink) {
  Unpacking unpacking(*this, index);
  const std::span<std::uint8_t> memory = memory_.Of(unpacking.Prepare());
  const std::span<const std::uint8_t> content = memory.first(unpacking.Run(memory));
  if (unpacking.Result() != ArchiveResult::kDone) return unpacking.Result();
  if (unpacking.IsToBeStreamed()) return UnpackStream(unpacking.Item(), sink);
  return content.empty() ? ArchiveResult::kDone : sink(content);
}

ArchiveResult ItemUnpacker::UnpackStream(const zip_stat_t& item, const Sink& sink) {
  const auto content = std::make_unique_for_overwrite<std::uint8_t[]>(kPieceBytes);
  std::unique_lock lock(access_);
  struct Unlocked {
    std::unique_lock<std::mutex>& lock;
    explicit Unlocked(std::unique_lock<std::mutex>& held) : lock(held) { lock.unlock(); }
    ~Unlocked() { lock.lock(); }
  };
  const OpenItem file(zip_fopen_index(zip_, item.index, 0), zip_fclose);
  if (!file) return ResultOf(zip_get_error(zip_));
  zip_uint64_t done = 0;
  std::uint32_t checksum = 0;
  for (;;) {
    const zip_int64_t read = zip_fread(file.get(), content.get(), kPieceBytes);
    if (read < 0) return ResultOf(zip_file_get_error(file.get()));
    if (read == 0) break;
    const auto length = static_cast<std::size_t>(read);
    if (length > item.size - done) return ArchiveResult::kDamaged;
    const Unlocked unlocked(lock);
    checksum = libdeflate_crc32(checksum, content.get(), length);
    done += length;
    const ArchiveResult taken = sink({content.get(), length});
    if (taken != ArchiveResult::kDone) return taken;
  }
  return done == item.size && checksum == item.crc ? ArchiveResult::kDone : ArchiveResult::kDamaged;
}

}  // namespace carrovan
