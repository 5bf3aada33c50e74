#include "cli/visible_text.h"

#include <algorithm>

namespace carrovan {
namespace {

struct Range {
  unsigned long first;
  unsigned long last;
};

// What a terminal obeys instead of showing it, or does not show at all.
constexpr Range kHidden[] = {{0x00, 0x1F},     {0x7F, 0x9F},     {0xAD, 0xAD},
                             {0x61C, 0x61C},   {0x200B, 0x200F}, {0x2028, 0x202E},
                             {0x2060, 0x206F}, {0xFEFF, 0xFEFF}};

bool IsHidden(wchar_t c) {
  const auto code = static_cast<char32_t>(c);
  return std::ranges::any_of(
      kHidden, [code](const Range& range) { return code >= range.first && code <= range.last; });
}

std::wstring EscapeOf(wchar_t c) {
  std::wstring digits;
  for (int shift = 12; shift >= 0; shift -= 4) {
    digits.push_back(L"0123456789abcdef"[(static_cast<unsigned long>(c) >> shift) & 0xF]);
  }
  return L"\\u" + digits;
}

}  // namespace

std::wstring VisibleText(std::wstring_view text) {
  std::wstring visible;
  for (const wchar_t c : text) visible += IsHidden(c) ? EscapeOf(c) : std::wstring(1, c);
  return visible;
}

std::wstring VisibleValue(std::wstring_view text) {
  constexpr std::size_t kMostCharacters = 200;
  if (text.size() <= kMostCharacters) return VisibleText(text);
  return VisibleText(text.substr(0, kMostCharacters)) + L"...";
}

}  // namespace carrovan
