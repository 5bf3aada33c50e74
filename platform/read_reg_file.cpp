#include "platform/read_reg_file.h"

#include <cstdint>
#include <vector>

#include "platform/text_encoding.h"

namespace carrovan {

std::optional<RegFile> ReadRegFile(const FileReader& files, const std::wstring& path) {
  std::string bytes;
  if (files.ReadBytes(path, bytes) != kSystemOk) return std::nullopt;
  const std::vector<std::uint8_t> content(bytes.begin(), bytes.end());
  return ParseRegFile(DecodeText(content).text);
}

}  // namespace carrovan
