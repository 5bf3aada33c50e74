#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace carrovan {

// Text files come in two kinds: UTF-16 little-endian behind the mark FF FE, and 8-bit text, which
// is read and written as UTF-8 here (a leading UTF-8 mark is not part of the text).
struct DecodedText {
  std::wstring text;  // without the mark
  bool isUtf16 = false;
};

// Bytes that are not text become U+FFFD; an odd last byte of UTF-16 is dropped.
DecodedText DecodeText(std::span<const std::uint8_t> bytes);

// The bytes of a file of the same kind, with its mark when it is UTF-16.
std::vector<std::uint8_t> EncodeText(const DecodedText& decoded);

}  // namespace carrovan
