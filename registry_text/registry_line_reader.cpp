#include "registry_text/registry_line_reader.h"

#include <algorithm>

#include "text/text.h"

namespace carrovan {
namespace {

constexpr std::u16string_view kBlanks = u" \t";

std::u16string_view FirstLine(std::u16string_view text) {
  std::u16string_view line = text.substr(0, text.find(u'\n'));
  if (line.ends_with(u'\r')) line.remove_suffix(1);
  return line;
}

std::u16string_view WithoutLeadingBlanks(std::u16string_view text) {
  return text.substr(std::min(text.find_first_not_of(kBlanks), text.size()));
}

std::optional<std::uint32_t> HexDigit(char16_t c) {
  if (c >= u'0' && c <= u'9') return static_cast<std::uint32_t>(c - u'0');
  if (c >= u'a' && c <= u'f') return static_cast<std::uint32_t>(c - u'a' + 10);
  if (c >= u'A' && c <= u'F') return static_cast<std::uint32_t>(c - u'A' + 10);
  return std::nullopt;
}

std::optional<char16_t> MeaningOfEscape(char16_t c) {
  switch (c) {
    case u'\\':
    case u'"':
      return c;
    case u'n':
      return u'\n';
    case u'r':
      return u'\r';
    default:
      return std::nullopt;
  }
}

}  // namespace

std::optional<QuotedString> QuotedString::AtFront(std::u16string_view text) {
  if (!text.starts_with(u'"')) return std::nullopt;
  for (std::size_t i = 1; i < text.size(); ++i) {
    if (text[i] == u'"') return QuotedString(text.substr(1, i - 1));
    if (text[i] != u'\\') continue;
    ++i;
    if (i == text.size() || !MeaningOfEscape(text[i])) return std::nullopt;
  }
  return std::nullopt;
}

template <typename Take>
void QuotedString::ForEachUnit(Take take) const {
  for (std::size_t i = 0; i < content_.size(); ++i) {
    take(content_[i] == u'\\' ? *MeaningOfEscape(content_[++i]) : content_[i]);
  }
}

std::wstring QuotedString::Text() const {
  std::u16string text;
  ForEachUnit([&text](char16_t unit) { text.push_back(unit); });
  return FromUtf16(text);
}

RegistryData::Bytes QuotedString::Data() const {
  std::size_t units = 1;
  ForEachUnit([&units](char16_t) { ++units; });
  RegistryData::Bytes data;
  data.reserve(2 * units);
  const auto add = [&data](char16_t unit) {
    data.push_back(static_cast<std::uint8_t>(unit & 0xFF));
    data.push_back(static_cast<std::uint8_t>(unit >> 8));
  };
  ForEachUnit(add);
  add(u'\0');
  return data;
}

bool RegistryLineReader::NextLine() {
  if (rest_.empty()) return false;
  line_ = WithoutLeadingBlanks(FirstLine(rest_));
  const std::size_t end = rest_.find(u'\n');
  rest_.remove_prefix(end == std::u16string_view::npos ? rest_.size() : end + 1);
  ++lineNumber_;
  return true;
}

char16_t RegistryLineReader::PeekNextLine() const {
  const std::u16string_view next = WithoutLeadingBlanks(FirstLine(rest_));
  return next.empty() ? u'\0' : next.front();
}

bool RegistryLineReader::Take(std::u16string_view expected) {
  if (!line_.starts_with(expected)) return false;
  line_.remove_prefix(expected.size());
  SkipBlanks();
  return true;
}

// The system's tool writes line ends of a name or a text as they are.
std::optional<QuotedString> RegistryLineReader::TakeString(Behind behind) {
  if (const auto quoted = QuotedString::AtFront(line_)) {
    line_.remove_prefix(quoted->Length());
    SkipBlanks();
    return quoted;
  }
  const std::size_t length = static_cast<std::size_t>(rest_.data() - line_.data()) + rest_.size();
  const auto quoted = QuotedString::AtFront({line_.data(), length});
  if (!quoted || !MoveBehind(quoted->Length(), behind)) return std::nullopt;
  return quoted;
}

// Moves to what stands that far behind the beginning of the line, on a later line, if it is what is
// expected there.
bool RegistryLineReader::MoveBehind(std::size_t length, Behind behind) {
  const std::u16string_view passed(line_.data(), length);
  std::u16string_view rest = rest_;
  rest.remove_prefix(length - static_cast<std::size_t>(rest_.data() - line_.data()));
  RegistryLineReader next(rest);
  next.NextLine();
  if (behind == Behind::kEquals ? !next.line_.starts_with(u'=') : !next.AtEnd()) return false;
  lineNumber_ += static_cast<std::size_t>(std::ranges::count(passed, u'\n'));
  line_ = next.line_;
  rest_ = next.rest_;
  return true;
}

std::optional<std::uint32_t> RegistryLineReader::TakeHex(std::size_t mostDigits) {
  std::uint32_t number = 0;
  std::size_t digits = 0;
  for (; digits < line_.size(); ++digits) {
    const auto digit = HexDigit(line_[digits]);
    if (!digit) break;
    if (digits == mostDigits) return std::nullopt;
    number = (number << 4) | *digit;
  }
  if (digits == 0) return std::nullopt;
  line_.remove_prefix(digits);
  SkipBlanks();
  return number;
}

void RegistryLineReader::SkipBlanks() { line_ = WithoutLeadingBlanks(line_); }

}  // namespace carrovan
