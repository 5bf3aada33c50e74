#include "platform/sandbox/change_log.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace carrovan {
namespace {

// A record begins with its checksum, which is of all that follows, the length of its content and
// its kind. Numbers begin with their lowest byte.
constexpr std::size_t kChecksumBytes = 4;
constexpr std::size_t kHeadBytes = kChecksumBytes + 4 + 1;

using Bytes = std::vector<std::uint8_t>;

void AppendNumber(Bytes& bytes, std::uint64_t number, std::size_t width) {
  for (std::size_t i = 0; i < width; ++i) {
    bytes.push_back(static_cast<std::uint8_t>(number >> (8 * i)));
  }
}

std::uint64_t NumberAt(std::span<const std::uint8_t> bytes, std::size_t width) {
  std::uint64_t number = 0;
  for (std::size_t i = width; i > 0; --i) number = number << 8 | bytes[i - 1];
  return number;
}

std::uint32_t ChecksumOf(std::span<const std::uint8_t> bytes) { return ImageOfHive(bytes).crc32; }

Bytes Record(LogRecordKind kind, std::span<const std::uint8_t> content) {
  Bytes record(kChecksumBytes);
  record.reserve(kHeadBytes + content.size());
  AppendNumber(record, content.size(), 4);
  record.push_back(static_cast<std::uint8_t>(kind));
  record.insert(record.end(), content.begin(), content.end());
  Bytes checksum;
  AppendNumber(checksum, ChecksumOf(std::span(record).subspan(kChecksumBytes)), kChecksumBytes);
  std::ranges::copy(checksum, record.begin());
  return record;
}

Bytes Saved(const FileImage& hiveFile) {
  Bytes content;
  AppendNumber(content, hiveFile.sizeBytes, 8);
  AppendNumber(content, hiveFile.crc32, 4);
  return content;
}

// The whole record at the front.
std::optional<LogRecord> RecordAt(std::span<const std::uint8_t> bytes) {
  if (bytes.size() < kHeadBytes) return std::nullopt;
  const std::uint64_t length = NumberAt(bytes.subspan(kChecksumBytes), 4);
  if (length > bytes.size() - kHeadBytes) return std::nullopt;
  bytes = bytes.first(kHeadBytes + static_cast<std::size_t>(length));
  if (NumberAt(bytes, kChecksumBytes) != ChecksumOf(bytes.subspan(kChecksumBytes))) {
    return std::nullopt;
  }
  return LogRecord{static_cast<LogRecordKind>(bytes[kHeadBytes - 1]), bytes.subspan(kHeadBytes)};
}

}  // namespace

LogContent ReadLogRecords(std::span<const std::uint8_t> bytes) {
  LogContent log;
  while (const auto record = RecordAt(bytes.subspan(log.wholeBytes))) {
    log.records.push_back(*record);
    log.wholeBytes += kHeadBytes + record->content.size();
  }
  return log;
}

std::vector<std::uint8_t> ChangeRecord(std::span<const std::uint8_t> registryText) {
  return Record(LogRecordKind::kChange, registryText);
}

std::vector<std::uint8_t> SavedRecord(const FileImage& hiveFile) {
  return Record(LogRecordKind::kSaved, Saved(hiveFile));
}

bool IsSavedAs(const LogRecord& record, const FileImage& hiveFile) {
  return record.kind == LogRecordKind::kSaved &&
         std::ranges::equal(record.content, Saved(hiveFile));
}

FileImage ImageOfHive(std::span<const std::uint8_t> content) {
  return ImageOfBytes({reinterpret_cast<const char*>(content.data()), content.size()});
}

FileStatus ChangeLog::Hold(bool make) {
  const FileStatus status = open_.OpenAlone(file_, make);
  if (status != FileStatus::kDone) return status;
  const auto facts = open_.Facts();
  bytes_ = facts ? static_cast<std::size_t>(facts->sizeBytes) : 0;
  if (!facts) open_.Close();
  return facts ? status : FileStatus::kFailed;
}

FileStatus ChangeLog::EndAt(std::size_t bytes) {
  const FileStatus status = open_.EndAt(bytes);
  if (status == FileStatus::kDone) bytes_ = bytes;
  return status;
}

FileStatus ChangeLog::Append(std::span<const std::uint8_t> record) {
  const FileStatus status = open_.WriteAt(bytes_, record);
  if (status == FileStatus::kDone) {
    bytes_ += record.size();
  } else {
    static_cast<void>(open_.EndAt(bytes_));
  }
  return status;
}

// Held until it is gone, so that nobody takes it over in between.
void ChangeLog::Remove() {
  RemoveFile(file_);
  LetGo();
}

}  // namespace carrovan
