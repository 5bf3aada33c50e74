#include "merge/names_and_numbers.h"

#include <algorithm>
#include <array>
#include <limits>

namespace carrovan {
namespace {

struct NumberAtStart {
  std::int64_t value = 0;  // clamped to 32 bits
  std::size_t end = 0;     // position behind the last digit
  bool hasDigits = false;
  bool fits = true;
};

template <typename Char>
bool IsSpace(Char c) {
  return c == Char{' '} || (c >= Char{'\t'} && c <= Char{'\r'});
}

template <typename Char>
bool IsDigit(Char c) {
  return c >= Char{'0'} && c <= Char{'9'};
}

template <typename Char>
NumberAtStart ReadNumber(std::basic_string_view<Char> text) {
  using Limits = std::numeric_limits<std::int32_t>;
  NumberAtStart number;
  while (number.end < text.size() && IsSpace(text[number.end])) ++number.end;
  bool negative = false;
  if (number.end < text.size() &&
      (text[number.end] == Char{'-'} || text[number.end] == Char{'+'})) {
    negative = text[number.end++] == Char{'-'};
  }
  for (; number.end < text.size() && IsDigit(text[number.end]); ++number.end) {
    const int digit = static_cast<int>(text[number.end] - Char{'0'});
    const std::int64_t next = number.value * 10 + (negative ? -digit : digit);
    number.value = std::clamp<std::int64_t>(next, Limits::min(), Limits::max());
    number.fits = number.fits && number.value == next;
    number.hasDigits = true;
  }
  return number;
}

template <typename Char>
std::optional<std::int32_t> ReadWhole(std::basic_string_view<Char> text) {
  const NumberAtStart number = ReadNumber(text);
  if (!number.hasDigits || !number.fits || number.end != text.size()) return std::nullopt;
  return static_cast<std::int32_t>(number.value);
}

}  // namespace

std::optional<std::int32_t> ReadWholeInteger(std::string_view text) { return ReadWhole(text); }
std::optional<std::int32_t> ReadWholeInteger(std::wstring_view text) { return ReadWhole(text); }

std::int32_t ReadLenientInteger(std::string_view text) {
  return static_cast<std::int32_t>(ReadNumber(text).value);
}
std::int32_t ReadLenientInteger(std::wstring_view text) {
  return static_cast<std::int32_t>(ReadNumber(text).value);
}

std::int32_t WrappingSum(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

namespace {

constexpr std::array<std::string_view, 10> kValueElementNames = {
    "Size",          "Major",
    "Minor",         "ID",
    "Name",          "Style",
    "UserDefine",    "UserDefinePanelID",
    "CollapseOrder", "IsAutoFindPanelIcon"};

}  // namespace

std::string_view ElementBaseName(std::string_view name) { return name.substr(0, name.rfind('-')); }

std::optional<std::int32_t> SuffixNumber(std::string_view name) {
  const std::size_t hyphen = name.rfind('-');
  return ReadWholeInteger(hyphen == std::string_view::npos ? name : name.substr(hyphen + 1));
}

bool IsValueElementName(std::string_view name) {
  return std::find(kValueElementNames.begin(), kValueElementNames.end(), name) !=
         kValueElementNames.end();
}

ContainerKind ContainerKindOf(std::string_view name) {
  if (!name.starts_with("Eye")) return ContainerKind::kNone;
  const std::string_view base = ElementBaseName(name);
  if (base == "EyeCustomRibbonPanel") return ContainerKind::kPanel;
  if (base == "EyeCustomRibbonCategory") return ContainerKind::kCategory;
  if (base == "EyeRibbonState") return ContainerKind::kState;
  return ContainerKind::kNone;
}

bool HoldsNumberedContainers(std::string_view name) {
  const ContainerKind kind = ContainerKindOf(name);
  return kind == ContainerKind::kState || kind == ContainerKind::kCategory;
}

}  // namespace carrovan
