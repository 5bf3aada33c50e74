#pragma once

#include <cstdint>
#include <string>

namespace carrovan {

// A file's content on its way into an archive: packed, and lying in the spool.
struct StoredEntry {
  std::string nameUtf8;  // with backslashes
  std::int64_t modifiedSeconds = 0;
  std::uint64_t sizeBytes = 0;
  std::uint64_t packedSizeBytes = 0;
  std::uint64_t spoolOffset = 0;
  std::uint32_t checksum = 0;  // CRC-32
  bool isDeflated = false;     // or as it was
};

}  // namespace carrovan
