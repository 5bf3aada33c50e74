#include "support/zip/zip_source.h"

#include <algorithm>
#include <cerrno>
#include <span>

namespace carrovan {
namespace {

std::span<std::uint8_t> Bytes(void* data, std::uint64_t length) {
  return {static_cast<std::uint8_t*>(data), static_cast<std::size_t>(length)};
}

zip_int64_t Fail(zip_error_t& error, int code, int systemCode) {
  zip_error_set(&error, code, systemCode);
  return -1;
}

// Reads from the range [start, end) of a file and moves the position within it.
zip_int64_t ReadRange(const OsFile& file, std::uint64_t start, std::uint64_t end,
                      std::uint64_t& position, std::span<std::uint8_t> buffer, zip_error_t& error) {
  const std::uint64_t left = end - start - position;
  const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), left));
  const auto length = file.ReadAt(start + position, buffer.first(wanted));
  if (!length) return Fail(error, ZIP_ER_READ, EIO);
  position += *length;
  return static_cast<zip_int64_t>(*length);
}

}  // namespace

std::unique_ptr<ArchiveInput> ArchiveInput::Open(const std::filesystem::path& path) {
  auto input = std::make_unique<ArchiveInput>();
  if (input->file_.OpenToRead(path) != FileStatus::kDone) return nullptr;
  const auto facts = input->file_.Facts();
  if (!facts) return nullptr;
  input->sizeBytes_ = facts->sizeBytes;
  return input;
}

void ArchiveInput::StartAt(std::uint64_t offset) {
  sizeBytes_ -= offset - startOffset_;
  startOffset_ = offset;
}

zip_int64_t ArchiveInput::Call(void* self, void* data, zip_uint64_t length,
                               zip_source_cmd_t command) {
  auto& input = *static_cast<ArchiveInput*>(self);
  switch (command) {
    case ZIP_SOURCE_SUPPORTS:
      return ZIP_SOURCE_SUPPORTS_SEEKABLE |
             ZIP_SOURCE_MAKE_COMMAND_BITMASK(ZIP_SOURCE_ACCEPT_EMPTY);
    case ZIP_SOURCE_OPEN:
      input.position_ = 0;
      return 0;
    case ZIP_SOURCE_READ:
      return ReadRange(input.file_, input.startOffset_, input.startOffset_ + input.sizeBytes_,
                       input.position_, Bytes(data, length), input.error_);
    case ZIP_SOURCE_SEEK:
      return input.Seek(data, length);
    case ZIP_SOURCE_TELL:
      return static_cast<zip_int64_t>(input.position_);
    case ZIP_SOURCE_STAT:
      return input.Describe(data);
    case ZIP_SOURCE_ERROR:
      return zip_error_to_data(&input.error_, data, length);
    case ZIP_SOURCE_CLOSE:
    case ZIP_SOURCE_FREE:
    case ZIP_SOURCE_ACCEPT_EMPTY:  // an empty file is no archive
      return 0;
    default:
      return Fail(input.error_, ZIP_ER_OPNOTSUPP, 0);
  }
}

zip_int64_t ArchiveInput::Seek(void* data, zip_uint64_t length) {
  const zip_int64_t target =
      zip_source_seek_compute_offset(position_, sizeBytes_, data, length, &error_);
  if (target < 0) return -1;
  position_ = static_cast<std::uint64_t>(target);
  return 0;
}

zip_int64_t ArchiveInput::Describe(void* data) const {
  auto& description = *static_cast<zip_stat_t*>(data);
  zip_stat_init(&description);
  description.valid = ZIP_STAT_SIZE;
  description.size = sizeBytes_;
  return sizeof(description);
}

zip_int64_t ArchiveOutput::Call(void* self, void* data, zip_uint64_t length,
                                zip_source_cmd_t command) {
  auto& output = *static_cast<ArchiveOutput*>(self);
  switch (command) {
    case ZIP_SOURCE_SUPPORTS:
      return ZIP_SOURCE_SUPPORTS_WRITABLE;
    case ZIP_SOURCE_STAT:  // there is no archive yet
      return Fail(output.error_, ZIP_ER_READ, ENOENT);
    case ZIP_SOURCE_WRITE:
      return output.Write(Bytes(data, length));
    case ZIP_SOURCE_SEEK_WRITE:
      return output.Seek(data, length);
    case ZIP_SOURCE_TELL_WRITE:
      return static_cast<zip_int64_t>(output.position_);
    case ZIP_SOURCE_ERROR:
      return zip_error_to_data(&output.error_, data, length);
    case ZIP_SOURCE_COMMIT_WRITE:
      return output.Flush();
    case ZIP_SOURCE_BEGIN_WRITE:
    case ZIP_SOURCE_ROLLBACK_WRITE:
    case ZIP_SOURCE_FREE:
      return 0;
    default:
      return Fail(output.error_, ZIP_ER_OPNOTSUPP, 0);
  }
}

zip_int64_t ArchiveOutput::Write(std::span<const std::uint8_t> data) {
  if (pending_.size() + data.size() > kPieceBytes && Flush() < 0) return -1;
  if (data.size() < kPieceBytes) {
    pending_.insert(pending_.end(), data.begin(), data.end());
  } else if (!Put(data)) {
    return -1;
  }
  position_ += data.size();
  sizeBytes_ = std::max(sizeBytes_, position_);
  return static_cast<zip_int64_t>(data.size());
}

zip_int64_t ArchiveOutput::Flush() {
  const bool written = Put(pending_);
  pending_.clear();
  return written ? 0 : -1;
}

// Everything up to the position but what is pending is in the file.
bool ArchiveOutput::Put(std::span<const std::uint8_t> data) {
  if (data.empty()) return true;
  status_ = file_.WriteAt(position_ - pending_.size(), data);
  if (status_ == FileStatus::kDone) return true;
  Fail(error_, ZIP_ER_WRITE, EIO);
  return false;
}

zip_int64_t ArchiveOutput::Seek(void* data, zip_uint64_t length) {
  if (Flush() < 0) return -1;
  const zip_int64_t target =
      zip_source_seek_compute_offset(position_, sizeBytes_, data, length, &error_);
  if (target < 0) return -1;
  position_ = static_cast<std::uint64_t>(target);
  return 0;
}

zip_int64_t EntryInput::Call(void* self, void* data, zip_uint64_t length,
                             zip_source_cmd_t command) {
  auto& input = *static_cast<EntryInput*>(self);
  switch (command) {
    case ZIP_SOURCE_SUPPORTS:
      return ZIP_SOURCE_SUPPORTS_READABLE;
    case ZIP_SOURCE_OPEN:
      input.position_ = 0;
      return 0;
    case ZIP_SOURCE_READ:
      return ReadRange(input.spool_, input.entry_.spoolOffset,
                       input.entry_.spoolOffset + input.entry_.packedSizeBytes, input.position_,
                       Bytes(data, length), input.error_);
    case ZIP_SOURCE_STAT:
      return input.Describe(data);
    case ZIP_SOURCE_ERROR:
      return zip_error_to_data(&input.error_, data, length);
    case ZIP_SOURCE_CLOSE:
    case ZIP_SOURCE_FREE:
      return 0;
    default:
      return Fail(input.error_, ZIP_ER_OPNOTSUPP, 0);
  }
}

zip_int64_t EntryInput::Describe(void* data) const {
  auto& description = *static_cast<zip_stat_t*>(data);
  zip_stat_init(&description);
  description.valid =
      ZIP_STAT_SIZE | ZIP_STAT_COMP_SIZE | ZIP_STAT_COMP_METHOD | ZIP_STAT_CRC | ZIP_STAT_MTIME;
  description.size = entry_.sizeBytes;
  description.comp_size = entry_.packedSizeBytes;
  description.comp_method = entry_.isDeflated ? ZIP_CM_DEFLATE : ZIP_CM_STORE;
  description.crc = entry_.checksum;
  description.mtime = entry_.modifiedSeconds;
  return sizeof(description);
}

zip_int64_t FileInput::Call(void* self, void* data, zip_uint64_t length, zip_source_cmd_t command) {
  auto& input = *static_cast<FileInput*>(self);
  switch (command) {
    case ZIP_SOURCE_SUPPORTS:
      return ZIP_SOURCE_SUPPORTS_READABLE;
    case ZIP_SOURCE_OPEN:
      return input.Open();
    case ZIP_SOURCE_READ:
      return input.Read(Bytes(data, length));
    case ZIP_SOURCE_STAT:
      return input.Describe(data);
    case ZIP_SOURCE_ERROR:
      return zip_error_to_data(&input.error_, data, length);
    case ZIP_SOURCE_CLOSE:
      input.file_.Close();
      return 0;
    case ZIP_SOURCE_FREE:
      return 0;
    default:
      return Fail(input.error_, ZIP_ER_OPNOTSUPP, 0);
  }
}

zip_int64_t FileInput::Open() {
  offset_ = 0;
  ahead_ = {};
  return file_.OpenToRead(entry_.source) == FileStatus::kDone ? 0 : Fail(error_, ZIP_ER_OPEN, EIO);
}

zip_int64_t FileInput::Read(std::span<std::uint8_t> target) {
  if (ahead_.empty()) {
    const auto length = file_.ReadAt(offset_, buffer_);
    if (!length) return Fail(error_, ZIP_ER_READ, EIO);
    offset_ += *length;
    ahead_ = std::span(buffer_).first(*length);
  }
  const std::size_t length = std::min(target.size(), ahead_.size());
  std::copy_n(ahead_.begin(), length, target.begin());
  ahead_ = ahead_.subspan(length);
  return static_cast<zip_int64_t>(length);
}

zip_int64_t FileInput::Describe(void* data) const {
  auto& description = *static_cast<zip_stat_t*>(data);
  zip_stat_init(&description);
  description.valid = ZIP_STAT_SIZE | ZIP_STAT_MTIME;
  description.size = entry_.sizeBytes;
  description.mtime = entry_.modifiedSeconds;
  return sizeof(description);
}

}  // namespace carrovan
