#include "text/text.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace carrovan {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool IsLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

char32_t JoinSurrogates(char32_t high, char32_t low) {
  return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

// Takes one code point off the front of 16- or 32-bit text; an unpaired surrogate comes as it is.
template <typename Char>
char32_t TakeCodePoint(std::basic_string_view<Char> text, std::size_t& position) {
  const char32_t first = static_cast<char32_t>(text[position++]);
  if (IsHighSurrogate(first) && position < text.size()) {
    const char32_t second = static_cast<char32_t>(text[position]);
    if (IsLowSurrogate(second)) {
      ++position;
      return JoinSurrogates(first, second);
    }
  }
  return first;
}

template <typename Char>
void AppendUnits(std::basic_string<Char>& out, char32_t codePoint) {
  if constexpr (sizeof(Char) == 2) {
    if (codePoint >= 0x10000) {
      out.push_back(static_cast<Char>(0xD800 + ((codePoint - 0x10000) >> 10)));
      out.push_back(static_cast<Char>(0xDC00 + ((codePoint - 0x10000) & 0x3FF)));
      return;
    }
  }
  out.push_back(static_cast<Char>(codePoint));
}

void AppendUtf8(std::string& out, char32_t c) {
  const auto byte = [&out](char32_t value) { out.push_back(static_cast<char>(value)); };
  if (c < 0x80) {
    byte(c);
  } else if (c < 0x800) {
    byte(0xC0 | (c >> 6));
    byte(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    byte(0xE0 | (c >> 12));
    byte(0x80 | ((c >> 6) & 0x3F));
    byte(0x80 | (c & 0x3F));
  } else {
    byte(0xF0 | (c >> 18));
    byte(0x80 | ((c >> 12) & 0x3F));
    byte(0x80 | ((c >> 6) & 0x3F));
    byte(0x80 | (c & 0x3F));
  }
}

struct Utf8Step {
  char32_t codePoint = kReplacement;
  std::size_t length = 1;
  bool valid = false;
};

Utf8Step DecodeUtf8(std::string_view text, std::size_t position) {
  const auto at = [&](std::size_t i) { return static_cast<std::uint8_t>(text[position + i]); };
  const std::uint8_t lead = at(0);
  if (lead < 0x80) return {lead, 1, true};
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() - position < length) return {};
  char32_t value = lead & (0xFFu >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    if ((at(i) & 0xC0) != 0x80) return {};
    value = (value << 6) | (at(i) & 0x3F);
  }
  constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool surrogate = IsHighSurrogate(value) || IsLowSurrogate(value);
  if (value < kSmallest[length] || value > 0x10FFFF || surrogate) return {};
  return {value, length, true};
}

struct CaseRange {
  char16_t first;
  char16_t last;
  int step;     // 1: every unit of the range is lower case; 2: every second one, from the first
  int toUpper;  // added to a lower-case unit
};

// The alphabets with two cases, written out because the C library's answer depends on the locale.
constexpr CaseRange kLowerCase[] = {
    {u'a', u'z', 1, -32},     {0x00E0, 0x00F6, 1, -32}, {0x00F8, 0x00FE, 1, -32},
    {0x00FF, 0x00FF, 1, 121}, {0x0101, 0x012F, 2, -1},  {0x0133, 0x0137, 2, -1},
    {0x013A, 0x0148, 2, -1},  {0x014B, 0x0177, 2, -1},  {0x017A, 0x017E, 2, -1},
    {0x03B1, 0x03C1, 1, -32}, {0x03C3, 0x03CB, 1, -32}, {0x0430, 0x044F, 1, -32},
    {0x0450, 0x045F, 1, -80}, {0x0461, 0x0481, 2, -1},  {0x0561, 0x0586, 1, -48},
    {0x1E01, 0x1E95, 2, -1},  {0xFF41, 0xFF5A, 1, -32},
};

char16_t UpperUnit(char16_t unit) {
  if (unit < 0x80) return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - 32) : unit;
  for (const CaseRange& range : kLowerCase) {
    if (unit < range.first || unit > range.last) continue;
    if ((unit - range.first) % range.step != 0) return unit;
    return static_cast<char16_t>(unit + range.toUpper);
  }
  return unit;
}

wchar_t LowerAscii(wchar_t c) {
  return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c;
}

}  // namespace

std::string ToUtf8(std::wstring_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    const char32_t c = TakeCodePoint(text, i);
    const bool encodable = !IsHighSurrogate(c) && !IsLowSurrogate(c) && c <= 0x10FFFF;
    AppendUtf8(out, encodable ? c : kReplacement);
  }
  return out;
}

std::wstring FromUtf8(std::string_view utf8) {
  std::wstring out;
  out.reserve(utf8.size());
  for (std::size_t i = 0; i < utf8.size();) {
    const Utf8Step step = DecodeUtf8(utf8, i);
    AppendUnits(out, step.codePoint);
    i += step.length;
  }
  return out;
}

bool IsUtf8(std::string_view bytes) {
  for (std::size_t i = 0; i < bytes.size();) {
    const Utf8Step step = DecodeUtf8(bytes, i);
    if (!step.valid) return false;
    i += step.length;
  }
  return true;
}

std::u16string ToUtf16(std::wstring_view text) {
  std::u16string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) AppendUnits(out, TakeCodePoint(text, i));
  return out;
}

std::wstring FromUtf16(std::u16string_view utf16) {
  std::wstring out;
  out.reserve(utf16.size());
  for (std::size_t i = 0; i < utf16.size();) AppendUnits(out, TakeCodePoint(utf16, i));
  return out;
}

bool EqualsIgnoringAsciiCase(std::wstring_view a, std::wstring_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](wchar_t x, wchar_t y) { return LowerAscii(x) == LowerAscii(y); });
}

bool EndsWithIgnoringAsciiCase(std::wstring_view text, std::wstring_view ending) {
  return text.size() >= ending.size() &&
         EqualsIgnoringAsciiCase(text.substr(text.size() - ending.size()), ending);
}

namespace {

int CompareUnits(std::u16string_view a, std::u16string_view b) {
  const std::size_t shared = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < shared; ++i) {
    const int difference = int{UpperUnit(a[i])} - int{UpperUnit(b[i])};
    if (difference != 0) return difference;
  }
  return (a.size() > b.size()) - (a.size() < b.size());
}

}  // namespace

int CompareNames(std::wstring_view a, std::wstring_view b) {
  const std::size_t shared = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < shared; ++i) {
    // Most paths share their folders.
    if (a[i] == b[i]) continue;
    const auto left = static_cast<char16_t>(a[i]);
    const auto right = static_cast<char16_t>(b[i]);
    // Beyond the 16-bit range a character is two units; such names are rare.
    if (left != a[i] || right != b[i]) return CompareUnits(ToUtf16(a), ToUtf16(b));
    const int difference = int{UpperUnit(left)} - int{UpperUnit(right)};
    if (difference != 0) return difference;
  }
  return (a.size() > b.size()) - (a.size() < b.size());
}

std::u16string FoldedName(std::wstring_view name) {
  std::u16string folded(name.size(), u'\0');
  for (std::size_t i = 0; i < name.size(); ++i) {
    const auto unit = static_cast<char16_t>(name[i]);
    // Beyond the 16-bit range a character is two units; such names are rare.
    if (unit != name[i]) {
      folded = ToUtf16(name);
      for (char16_t& each : folded) each = UpperUnit(each);
      return folded;
    }
    folded[i] = UpperUnit(unit);
  }
  return folded;
}

std::wstring ReplaceAll(std::wstring_view text, std::wstring_view search,
                        std::wstring_view replacement) {
  if (search.empty()) return std::wstring(text);
  std::wstring out;
  std::size_t from = 0;
  for (std::size_t hit = text.find(search); hit != std::wstring_view::npos;
       hit = text.find(search, from)) {
    out.append(text.substr(from, hit - from)).append(replacement);
    from = hit + search.size();
  }
  return out.append(text.substr(from));
}

bool Contains(std::wstring_view text, std::wstring_view search) {
  return !search.empty() && text.find(search) != std::wstring_view::npos;
}

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
