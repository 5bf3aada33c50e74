#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/archive_library.h"
#include "support/files/os_file.h"

namespace carrovan {

// Content up to this size, packed and unpacked, is compressed and expanded in one call, which takes
// half the time of a stream or less. Whoever does it holds two buffers of it, so it also sets how
// much memory an archive needs.
inline constexpr std::size_t kBufferBytes = std::size_t{24} << 20;

// What a failure to write a file means to whoever asked for the file.
inline ArchiveResult ResultOfWriting(FileStatus status) {
  if (status == FileStatus::kDone) return ArchiveResult::kDone;
  return status == FileStatus::kDiskFull ? ArchiveResult::kDiskFull
                                         : ArchiveResult::kTargetNotWritable;
}

// A file's content on its way into an archive: packed, and lying in the spool; or as it is, and
// still where it came from.
struct StoredEntry {
  std::filesystem::path source;  // of content that is not in the spool, else empty
  std::string nameUtf8;          // with backslashes
  std::int64_t modifiedSeconds = 0;
  std::uint64_t sizeBytes = 0;
  std::uint64_t packedSizeBytes = 0;
  std::uint64_t spoolOffset = 0;
  std::uint32_t checksum = 0;  // CRC-32
  bool isDeflated = false;     // or as it was
};

// Where the records of a zip archive lie in its file, and whether they say the same. libzip goes by
// the directory alone, other programs by what stands in front of an item's content.

struct ArchiveLayout {
  std::uint64_t startOffset = 0;  // of the archive in the file; what is in front is no part of it
  std::uint64_t directoryOffset = 0;  // in the archive
  std::uint64_t directoryBytes = 0;
  std::uint64_t entries = 0;  // as the archive declares; never to be believed
};

// Looks for the record at an archive's end. Nothing when there is none or when it leads nowhere.
std::optional<ArchiveLayout> FindArchive(const OsFile& file, std::uint64_t fileBytes);

// What is wrong with the records of each item, in the order of the directory (see
// ArchiveExaminer::HeaderProblem); an empty text when all is well. As many texts as items are asked
// for.
std::vector<std::wstring> CompareHeaders(const OsFile& file, const ArchiveLayout& layout,
                                         std::size_t items);

// Whether an archive must survive a power cut.
enum class Durability { kFlushed, kNotFlushed };

// Writes an archive of the entries, whose packed content lies in the spool or whose content lies at
// its source, in their order, and puts it in place of what is at the path. On failure that is as it
// was.
[[nodiscard]] ArchiveResult WriteArchiveFile(const std::filesystem::path& archive,
                                             const OsFile& spool,
                                             const std::vector<StoredEntry>& entries,
                                             Durability durability);

}  // namespace carrovan
