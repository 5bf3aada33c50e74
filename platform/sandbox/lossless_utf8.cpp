#include "platform/sandbox/lossless_utf8.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "platform/text.h"

namespace carrovan {
namespace {

constexpr char32_t kByteBase = 0xDC00;

// Length of the well-formed character at the front, or 0.
std::size_t CharacterLength(std::string_view bytes) {
  const std::size_t longest = std::min<std::size_t>(bytes.size(), 4);
  for (std::size_t length = 1; length <= longest; ++length) {
    if (IsUtf8(bytes.substr(0, length))) return length;
  }
  return 0;
}

bool IsHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool IsLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }
bool StandsForByte(char32_t unit) { return unit >= kByteBase + 0x80 && unit <= kByteBase + 0xFF; }

}  // namespace

std::wstring FromLosslessUtf8(std::string_view bytes) {
  if (IsUtf8(bytes)) return FromUtf8(bytes);
  std::wstring text;
  while (!bytes.empty()) {
    const std::size_t length = CharacterLength(bytes);
    if (length > 0) {
      text += FromUtf8(bytes.substr(0, length));
    } else {
      text.push_back(static_cast<wchar_t>(kByteBase + static_cast<std::uint8_t>(bytes.front())));
    }
    bytes.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return text;
}

std::string ToLosslessUtf8(std::wstring_view text) {
  std::string bytes;
  while (!text.empty()) {
    const auto unit = static_cast<char32_t>(text.front());
    const bool pair =
        IsHighSurrogate(unit) && text.size() > 1 && IsLowSurrogate(static_cast<char32_t>(text[1]));
    if (StandsForByte(unit)) {
      bytes.push_back(static_cast<char>(unit - kByteBase));
    } else {
      bytes += ToUtf8(text.substr(0, pair ? 2 : 1));
    }
    text.remove_prefix(pair ? 2 : 1);
  }
  return bytes;
}

}  // namespace carrovan
