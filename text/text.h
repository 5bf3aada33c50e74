#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace carrovan {

// Text inside the program is std::wstring, whose unit is 16 bits wide on Windows and 32 elsewhere.
// These conversions and comparisons give the same answer on both.

// An unpaired surrogate (and, when decoding, each byte that is not UTF-8) becomes U+FFFD.
std::string ToUtf8(std::wstring_view text);
std::wstring FromUtf8(std::string_view utf8);

// True when the bytes are well-formed UTF-8: shortest forms only, no surrogates.
bool IsUtf8(std::string_view bytes);

// Nothing is lost: an unpaired surrogate passes through.
std::u16string ToUtf16(std::wstring_view text);
std::wstring FromUtf16(std::u16string_view utf16);

// Letters A to Z and a to z only, for names that programs compare ("reg", ".UCX").
bool EqualsIgnoringAsciiCase(std::wstring_view a, std::wstring_view b);
bool EndsWithIgnoringAsciiCase(std::wstring_view text, std::wstring_view ending);

// The order in which the system keeps names of files and registry keys: 16-bit unit by unit, upper
// case. Negative, zero or positive; zero means the same name.
int CompareNames(std::wstring_view a, std::wstring_view b);

// Orders names so, in sets and maps.
struct NameLess {
  using is_transparent = void;
  bool operator()(std::wstring_view a, std::wstring_view b) const { return CompareNames(a, b) < 0; }
};

// A name as CompareNames sees it: equal for the same name and in the same order, for sorting and
// finding many.
std::u16string FoldedName(std::wstring_view name);

// Every occurrence, found from left to right without overlap; an empty search text replaces
// nothing.
std::wstring ReplaceAll(std::wstring_view text, std::wstring_view search,
                        std::wstring_view replacement);

// False for an empty search text.
bool Contains(std::wstring_view text, std::wstring_view search);

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
