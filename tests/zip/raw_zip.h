#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace carrovan {

// Archives put together byte by byte, with whatever a stranger may have written into them.
struct RawItem {
  std::string name;
  std::string data;  // as it lies in the archive
  std::uint16_t flags = 0;
  std::uint16_t method = 0;  // stored
  std::uint16_t dosTime = 0;
  std::uint16_t dosDate = 0x21;  // 1 January 1980
  // What the archive declares; taken from the data when left out.
  std::optional<std::uint32_t> checksum = std::nullopt;
  std::optional<std::uint32_t> sizeBytes = std::nullopt;
  std::optional<std::uint32_t> packedSizeBytes = std::nullopt;
  std::optional<std::uint32_t> headerOffset = std::nullopt;
};

std::string RawZip(const std::vector<RawItem>& items);

std::uint32_t Crc32(std::string_view data);

// A little-endian number in an archive's bytes.
std::uint32_t NumberAt(std::string_view bytes, std::size_t offset, std::size_t length);
void SetNumberAt(std::string& bytes, std::size_t offset, std::size_t length, std::uint32_t number);

// Where the n-th record of the central directory begins.
std::size_t CentralRecord(std::string_view archive, std::size_t index);

}  // namespace carrovan
