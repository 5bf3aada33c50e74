#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <utility>
#include <vector>

#include "platform/file_operations.h"
#include "support/files/os_file.h"

namespace carrovan {

// A record of a change log.
enum class LogRecordKind : std::uint8_t {
  kChange = 1,  // the text of a registry file, as UTF-16
  kSaved = 2,   // the image of a hive file that holds the outcome of all records in front
};

struct LogRecord {
  LogRecordKind kind = LogRecordKind::kChange;
  std::span<const std::uint8_t> content;  // in the bytes that were read
};

struct LogContent {
  std::vector<LogRecord> records;
  std::size_t wholeBytes = 0;  // what lies behind them was never finished and says nothing
};

// The records in the bytes of a log, in their order. Each bears a checksum, and the first that is
// not whole ends the log.
LogContent ReadLogRecords(std::span<const std::uint8_t> bytes);

std::vector<std::uint8_t> ChangeRecord(std::span<const std::uint8_t> registryText);
std::vector<std::uint8_t> SavedRecord(const FileImage& hiveFile);

// Whether a record says that the hive file of this image holds all that was changed before it.
bool IsSavedAs(const LogRecord& record, const FileImage& hiveFile);

// The image of a hive file with this content.
FileImage ImageOfHive(std::span<const std::uint8_t> content);

// The log file, held by one process at a time and read by any.
class ChangeLog {
 public:
  explicit ChangeLog(std::filesystem::path file) : file_(std::move(file)) {}

  const std::filesystem::path& File() const { return file_; }

  // Holds the log, which is made where `make` says so. kMissing when it is not there, kInUse while
  // another process holds it.
  [[nodiscard]] FileStatus Hold(bool make);
  bool IsHeld() const { return open_.IsOpen(); }

  // For a log that is held.
  std::size_t Bytes() const { return bytes_; }
  [[nodiscard]] FileStatus EndAt(std::size_t bytes);

  // A record that cannot be written leaves the log as it was.
  [[nodiscard]] FileStatus Append(std::span<const std::uint8_t> record);

  void Remove();
  void LetGo() { open_.Close(); }

 private:
  std::filesystem::path file_;
  OsFile open_;
  std::size_t bytes_ = 0;
};

}  // namespace carrovan
