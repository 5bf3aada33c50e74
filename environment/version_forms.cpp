#include "environment/version_forms.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace carrovan {
namespace {

bool IsBlank(wchar_t c) { return c == L' ' || (c >= L'\t' && c <= L'\r'); }
bool IsDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

// The longest front part that could be a decimal number, as plain characters. Words such as "inf",
// which number parsers also take, hold none of its characters at the front and give an empty text.
std::string NumberCharacters(std::wstring_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  std::string characters;
  if (!text.empty() && (text.front() == L'-' || text.front() == L'+')) {
    if (text.front() == L'-') characters.push_back('-');
    text.remove_prefix(1);
  }
  if (text.empty() || !(IsDigit(text.front()) || text.front() == L'.')) return {};
  for (const wchar_t c : text) {
    const bool plain = IsDigit(c) || std::wstring_view(L".eE+-").find(c) != std::wstring_view::npos;
    if (!plain) break;
    characters.push_back(static_cast<char>(c));
  }
  return characters;
}

// As "%d" prints a number that was cast to int, without the cast's undefined range.
int TruncateToInt(double number) {
  constexpr double kLowest = std::numeric_limits<int>::min();
  constexpr double kHighest = std::numeric_limits<int>::max();
  return static_cast<int>(std::clamp(std::trunc(number), kLowest, kHighest));
}

}  // namespace

double LeadingNumber(std::wstring_view text) {
  const std::string characters = NumberCharacters(text);
  double number = 0;
  std::from_chars(characters.data(), characters.data() + characters.size(), number);
  return number;
}

int LeadingInteger(std::wstring_view text) {
  std::string characters = NumberCharacters(text);
  characters.resize(std::min(characters.find_first_of(".eE+"), characters.size()));
  int number = 0;
  const auto result =
      std::from_chars(characters.data(), characters.data() + characters.size(), number);
  if (result.ec != std::errc::result_out_of_range) return number;
  return characters.front() == '-' ? std::numeric_limits<int>::min()
                                   : std::numeric_limits<int>::max();
}

std::wstring YearForm(std::wstring_view internalForm) {
  constexpr int kHighest = std::numeric_limits<int>::max() - kFirstReleaseYear;
  const int release = std::min(TruncateToInt(LeadingNumber(internalForm)), kHighest);
  return std::to_wstring(release + kFirstReleaseYear);
}

std::wstring InternalForm(std::wstring_view yearForm) {
  const long long release = static_cast<long long>(LeadingInteger(yearForm)) - kFirstReleaseYear;
  return std::to_wstring(release) + L".0";
}

}  // namespace carrovan
