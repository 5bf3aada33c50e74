#include "restore/journal_text.h"

#include "platform/text.h"

namespace carrovan {
namespace {

constexpr std::size_t kDigits = 4;

bool IsBetween(char16_t unit, char16_t first, char16_t last) {
  return unit >= first && unit <= last;
}

void AppendEscape(std::u16string& text, char16_t unit) {
  constexpr char16_t kHexadecimal[] = u"0123456789ABCDEF";
  text.push_back(u'%');
  for (int shift = 12; shift >= 0; shift -= 4) text.push_back(kHexadecimal[(unit >> shift) & 15]);
}

int DigitValue(char16_t digit) {
  if (IsBetween(digit, u'0', u'9')) return digit - u'0';
  if (IsBetween(digit, u'A', u'F')) return digit - u'A' + 10;
  return -1;
}

// The unit that an escape at this place stands for; -1 when there is none.
int EscapedUnit(std::u16string_view text) {
  if (text.size() < 1 + kDigits || text[0] != u'%') return -1;
  int unit = 0;
  for (const char16_t digit : text.substr(1, kDigits)) {
    const int value = DigitValue(digit);
    if (value < 0) return -1;
    unit = unit * 16 + value;
  }
  return unit;
}

}  // namespace

std::string ToJournalText(std::wstring_view text) {
  const std::u16string units = ToUtf16(text);
  std::u16string escaped;
  for (std::size_t i = 0; i < units.size(); ++i) {
    const bool pair = IsBetween(units[i], 0xD800, 0xDBFF) && i + 1 < units.size() &&
                      IsBetween(units[i + 1], 0xDC00, 0xDFFF);
    if (pair) {
      escaped.append(units, i++, 2);
    } else if (units[i] == u'%' || IsBetween(units[i], 0xD800, 0xDFFF)) {
      AppendEscape(escaped, units[i]);
    } else {
      escaped.push_back(units[i]);
    }
  }
  return ToUtf8(FromUtf16(escaped));
}

std::wstring FromJournalText(std::string_view utf8) {
  const std::u16string escaped = ToUtf16(FromUtf8(utf8));
  std::u16string units;
  for (std::size_t i = 0; i < escaped.size(); ++i) {
    const int unit = EscapedUnit(std::u16string_view(escaped).substr(i));
    units.push_back(unit < 0 ? escaped[i] : static_cast<char16_t>(unit));
    if (unit >= 0) i += kDigits;
  }
  return FromUtf16(units);
}

}  // namespace carrovan
