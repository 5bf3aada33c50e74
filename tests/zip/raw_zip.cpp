#include "tests/zip/raw_zip.h"

namespace carrovan {
namespace {

void Append(std::string& bytes, std::uint64_t number, std::size_t length) {
  for (std::size_t i = 0; i < length; ++i) {
    bytes.push_back(static_cast<char>((number >> (8 * i)) & 0xFF));
  }
}

// What the local header and the central record have in common.
void AppendFacts(std::string& bytes, const RawItem& item) {
  const auto length = static_cast<std::uint32_t>(item.data.size());
  Append(bytes, 20, 2);  // version needed
  Append(bytes, item.flags, 2);
  Append(bytes, item.method, 2);
  Append(bytes, item.dosTime, 2);
  Append(bytes, item.dosDate, 2);
  Append(bytes, item.checksum ? *item.checksum : Crc32(item.data), 4);
  Append(bytes, item.packedSizeBytes.value_or(length), 4);
  Append(bytes, item.sizeBytes.value_or(length), 4);
  Append(bytes, item.name.size(), 2);
  Append(bytes, 0, 2);  // extra fields
}

}  // namespace

std::string RawZip(const std::vector<RawItem>& items) {
  std::string archive;
  std::string directory;
  for (const RawItem& item : items) {
    const auto offset = static_cast<std::uint32_t>(archive.size());
    archive += "PK\3\4";
    AppendFacts(archive, item);
    archive += item.name + item.data;
    directory += "PK\1\2";
    Append(directory, 20, 2);  // made by DOS
    AppendFacts(directory, item);
    directory += std::string(2 + 2 + 2 + 4, '\0');  // comment, disk, attributes
    Append(directory, item.headerOffset.value_or(offset), 4);
    directory += item.name;
  }
  std::string end = "PK\5\6";
  Append(end, 0, 4);  // disks
  Append(end, items.size(), 2);
  Append(end, items.size(), 2);
  Append(end, directory.size(), 4);
  Append(end, archive.size(), 4);
  Append(end, 0, 2);  // comment
  return archive + directory + end;
}

std::uint32_t Crc32(std::string_view data) {
  std::uint32_t crc = 0xFFFFFFFF;
  for (const char c : data) {
    crc ^= static_cast<unsigned char>(c);
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xEDB88320U : 0U);
  }
  return ~crc;
}

std::uint32_t NumberAt(std::string_view bytes, std::size_t offset, std::size_t length) {
  std::uint32_t number = 0;
  for (std::size_t i = length; i > 0; --i) {
    number = number << 8 | static_cast<unsigned char>(bytes[offset + i - 1]);
  }
  return number;
}

void SetNumberAt(std::string& bytes, std::size_t offset, std::size_t length, std::uint32_t number) {
  for (std::size_t i = 0; i < length; ++i) {
    bytes[offset + i] = static_cast<char>((number >> (8 * i)) & 0xFF);
  }
}

std::size_t CentralRecord(std::string_view archive, std::size_t index) {
  const std::size_t end = archive.rfind("PK\5\6");
  std::size_t record = NumberAt(archive, end + 16, 4);
  for (std::size_t i = 0; i < index; ++i) {
    record += 46 + NumberAt(archive, record + 28, 2) + NumberAt(archive, record + 30, 2) +
              NumberAt(archive, record + 32, 2);
  }
  return record;
}

}  // namespace carrovan
