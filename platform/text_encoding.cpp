#include "platform/text_encoding.h"

#include <string_view>

#include "platform/text.h"

namespace carrovan {
namespace {

constexpr std::uint8_t kUtf16Mark[] = {0xFF, 0xFE};
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

bool HasUtf16Mark(std::span<const std::uint8_t> bytes) {
  return bytes.size() >= 2 && bytes[0] == kUtf16Mark[0] && bytes[1] == kUtf16Mark[1];
}

std::wstring DecodeUtf16Units(std::span<const std::uint8_t> bytes) {
  std::u16string units;
  units.reserve(bytes.size() / 2);
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    units.push_back(static_cast<char16_t>(bytes[i] | (bytes[i + 1] << 8)));
  }
  return FromUtf16(units);
}

}  // namespace

DecodedText DecodeText(std::span<const std::uint8_t> bytes) {
  if (HasUtf16Mark(bytes)) return {DecodeUtf16Units(bytes.subspan(2)), true};
  std::string text(bytes.begin(), bytes.end());
  if (text.starts_with(kUtf8Mark)) text.erase(0, kUtf8Mark.size());
  return {FromUtf8(text), false};
}

std::vector<std::uint8_t> EncodeText(const DecodedText& decoded) {
  if (!decoded.isUtf16) {
    const std::string utf8 = ToUtf8(decoded.text);
    return {utf8.begin(), utf8.end()};
  }
  std::vector<std::uint8_t> bytes(std::begin(kUtf16Mark), std::end(kUtf16Mark));
  for (const char16_t unit : ToUtf16(decoded.text)) {
    bytes.push_back(static_cast<std::uint8_t>(unit & 0xFF));
    bytes.push_back(static_cast<std::uint8_t>(unit >> 8));
  }
  return bytes;
}

}  // namespace carrovan
