#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace carrovan {

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

}  // namespace carrovan
