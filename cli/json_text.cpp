#include "cli/json_text.h"

#include <charconv>
#include <cstdint>
#include <optional>

#include "text/text.h"

namespace carrovan {
namespace {

constexpr char16_t kMark = 0xFDD0;  // a character that texts do not hold
constexpr std::string_view kMarkInUtf8 = "\xEF\xB7\x90";
constexpr char16_t kFirstSurrogate = 0xD800;
constexpr char16_t kFirstCarrier = 0xE000;

bool IsHigh(char16_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool IsLow(char16_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

std::u16string CarrierOf(char16_t surrogate) {
  return {kMark, static_cast<char16_t>(surrogate - kFirstSurrogate + kFirstCarrier)};
}

std::u16string EscapeOf(char16_t surrogate) {
  constexpr char16_t kDigits[] = u"0123456789abcdef";
  return {u'\\',
          u'u',
          kDigits[surrogate >> 12],
          kDigits[(surrogate >> 8) & 0xF],
          kDigits[(surrogate >> 4) & 0xF],
          kDigits[surrogate & 0xF]};
}

std::u16string ItselfAs(char16_t surrogate) { return {surrogate}; }

// Puts what `shown` makes of a carried half in the place of its carrier.
std::wstring WithoutCarriers(std::string_view text, std::u16string (*shown)(char16_t)) {
  const std::u16string units = ToUtf16(FromUtf8(text));
  std::u16string result;
  for (std::size_t i = 0; i < units.size(); ++i) {
    if (units[i] != kMark || i + 1 == units.size()) {
      result.push_back(units[i]);
      continue;
    }
    const char16_t carrier = units[++i];
    if (carrier == kMark) {
      result.push_back(kMark);
    } else {
      result += shown(static_cast<char16_t>(carrier - kFirstCarrier + kFirstSurrogate));
    }
  }
  return FromUtf16(result);
}

// The unit of an escape "\uXXXX" at the front of the text.
std::optional<char16_t> EscapedUnit(std::string_view text) {
  constexpr std::size_t kLength = 6;
  if (text.size() < kLength || !text.starts_with("\\u")) return std::nullopt;
  std::uint16_t unit = 0;
  const char* const end = text.data() + kLength;
  const auto [stop, error] = std::from_chars(text.data() + 2, end, unit, 16);
  if (error != std::errc() || stop != end) return std::nullopt;
  return unit;
}

// Takes one character or escape off the front and gives what the library is to read.
std::string TakeReadable(std::string_view& rest) {
  constexpr std::size_t kEscapeLength = 6;
  const auto take = [&rest](std::size_t length) {
    std::string taken(rest.substr(0, length));
    rest.remove_prefix(taken.size());
    return taken;
  };
  if (rest.starts_with(kMarkInUtf8)) return take(kMarkInUtf8.size()).append(kMarkInUtf8);
  if (rest.front() != '\\') return take(1);
  const std::optional<char16_t> unit = EscapedUnit(rest);
  if (!unit) return take(2);
  std::string escape = take(kEscapeLength);
  if (*unit == kMark) return std::string(kMarkInUtf8).append(kMarkInUtf8);
  if (IsHigh(*unit)) {
    const std::optional<char16_t> next = EscapedUnit(rest);
    if (next && IsLow(*next)) return escape + take(kEscapeLength);
  }
  if (!IsHigh(*unit) && !IsLow(*unit)) return escape;
  return ToUtf8(FromUtf16(CarrierOf(*unit)));
}

}  // namespace

std::string ToJsonLibrary(std::wstring_view text) {
  const std::u16string units = ToUtf16(text);
  std::u16string carried;
  for (std::size_t i = 0; i < units.size(); ++i) {
    const bool isPair = IsHigh(units[i]) && i + 1 < units.size() && IsLow(units[i + 1]);
    if (isPair) {
      carried.append(units, i, 2);
      ++i;
    } else if (IsHigh(units[i]) || IsLow(units[i])) {
      carried += CarrierOf(units[i]);
    } else {
      carried.append(units[i] == kMark ? 2 : 1, units[i]);
    }
  }
  return ToUtf8(FromUtf16(carried));
}

std::wstring FromJsonLibrary(std::string_view text) { return WithoutCarriers(text, ItselfAs); }

std::wstring PrintedJson(std::string_view printed) { return WithoutCarriers(printed, EscapeOf); }

std::string ReadableJson(std::string_view document) {
  std::string readable;
  readable.reserve(document.size());
  while (!document.empty()) readable += TakeReadable(document);
  return readable;
}

}  // namespace carrovan
