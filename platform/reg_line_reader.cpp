#include "platform/reg_line_reader.h"

#include <algorithm>

namespace carrovan {
namespace {

constexpr std::wstring_view kBlanks = L" \t";

std::wstring_view FirstLine(std::wstring_view text) {
  std::wstring_view line = text.substr(0, text.find(L'\n'));
  if (line.ends_with(L'\r')) line.remove_suffix(1);
  return line;
}

std::wstring_view WithoutLeadingBlanks(std::wstring_view text) {
  return text.substr(std::min(text.find_first_not_of(kBlanks), text.size()));
}

std::optional<std::uint32_t> HexDigit(wchar_t c) {
  if (c >= L'0' && c <= L'9') return static_cast<std::uint32_t>(c - L'0');
  if (c >= L'a' && c <= L'f') return static_cast<std::uint32_t>(c - L'a' + 10);
  if (c >= L'A' && c <= L'F') return static_cast<std::uint32_t>(c - L'A' + 10);
  return std::nullopt;
}

std::optional<wchar_t> MeaningOfEscape(wchar_t c) {
  switch (c) {
    case L'\\':
    case L'"':
      return c;
    case L'n':
      return L'\n';
    case L'r':
      return L'\r';
    default:
      return std::nullopt;
  }
}

}  // namespace

bool RegLineReader::NextLine() {
  if (rest_.empty()) return false;
  line_ = WithoutLeadingBlanks(FirstLine(rest_));
  const std::size_t end = rest_.find(L'\n');
  rest_.remove_prefix(end == std::wstring_view::npos ? rest_.size() : end + 1);
  ++lineNumber_;
  return true;
}

wchar_t RegLineReader::PeekNextLine() const {
  const std::wstring_view next = WithoutLeadingBlanks(FirstLine(rest_));
  return next.empty() ? L'\0' : next.front();
}

bool RegLineReader::Take(std::wstring_view expected) {
  if (!line_.starts_with(expected)) return false;
  line_.remove_prefix(expected.size());
  SkipBlanks();
  return true;
}

std::optional<std::wstring> RegLineReader::TakeString() {
  if (!line_.starts_with(L'"')) return std::nullopt;
  std::wstring text;
  for (std::size_t i = 1; i < line_.size(); ++i) {
    wchar_t c = line_[i];
    if (c == L'"') {
      line_.remove_prefix(i + 1);
      SkipBlanks();
      return text;
    }
    if (c == L'\\') {
      const auto meant = i + 1 < line_.size() ? MeaningOfEscape(line_[i + 1]) : std::nullopt;
      if (!meant) return std::nullopt;
      c = *meant;
      ++i;
    }
    text.push_back(c);
  }
  return std::nullopt;
}

std::optional<std::uint32_t> RegLineReader::TakeHex(std::size_t mostDigits) {
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

void RegLineReader::SkipBlanks() { line_ = WithoutLeadingBlanks(line_); }

}  // namespace carrovan
