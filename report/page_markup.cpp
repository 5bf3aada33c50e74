#include "report/page_markup.h"

#include <cstdint>

#include "text/text.h"

namespace carrovan {
namespace {

bool IsHigh(char16_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool IsLow(char16_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

// What has no look of its own or changes that of its neighbours.
bool IsUnseen(char16_t unit) {
  if (unit < 0x20 || (unit >= 0x7F && unit < 0xA0)) return true;
  return unit == 0xAD || unit == 0x61C || unit == 0x200B || unit == 0x200E || unit == 0x200F ||
         (unit >= 0x2028 && unit <= 0x202E) || (unit >= 0x2060 && unit <= 0x206F) ||
         unit == 0xFEFF || (unit >= 0xFFF0 && unit <= 0xFFFB) || unit >= 0xFFFE ||
         (unit >= 0xFDD0 && unit <= 0xFDEF);
}

std::string EscapeOf(char16_t unit) {
  if (unit == u'\n') return "\\n";
  if (unit == u'\r') return "\\r";
  if (unit == u'\t') return "\\t";
  constexpr char kDigits[] = "0123456789ABCDEF";
  return {'\\',
          'u',
          kDigits[(unit >> 12) & 0xF],
          kDigits[(unit >> 8) & 0xF],
          kDigits[(unit >> 4) & 0xF],
          kDigits[unit & 0xF]};
}

std::string_view ReferenceOf(char16_t unit) {
  switch (unit) {
    case u'&':
      return "&amp;";
    case u'<':
      return "&lt;";
    case u'>':
      return "&gt;";
    case u'"':
      return "&quot;";
    case u'\'':
      return "&#39;";
    default:
      return {};
  }
}

enum class Place { kContent, kName, kTitle };

class MarkupWriter {
 public:
  explicit MarkupWriter(Place place) : place_(place) {}

  std::string Write(std::wstring_view text) {
    const std::u16string units = ToUtf16(text);
    for (std::size_t i = 0; i < units.size(); ++i) {
      const bool isPair = IsHigh(units[i]) && i + 1 < units.size() && IsLow(units[i + 1]);
      if (isPair) {
        markup_ += ToUtf8(FromUtf16(std::u16string_view(units).substr(i++, 2)));
      } else {
        Add(units[i]);
      }
    }
    return std::move(markup_);
  }

 private:
  void Add(char16_t unit) {
    if (IsUnseen(unit) || IsHigh(unit) || IsLow(unit)) return AddEscape(unit);
    const std::string_view reference = ReferenceOf(unit);
    if (!reference.empty()) {
      markup_ += reference;
    } else {
      markup_ += ToUtf8(FromUtf16(std::u16string_view(&unit, 1)));
    }
    if (place_ == Place::kName && (unit == u'\\' || unit == u'/')) markup_ += "<wbr>";
  }

  void AddEscape(char16_t unit) {
    const std::string escape = EscapeOf(unit);
    markup_ += place_ == Place::kTitle ? escape : "<span class=\"esc\">" + escape + "</span>";
  }

  Place place_;
  std::string markup_;
};

}  // namespace

std::string MarkupOf(std::wstring_view text) { return MarkupWriter(Place::kContent).Write(text); }

std::string NameMarkup(std::wstring_view name) {
  return "<bdi>" + MarkupWriter(Place::kName).Write(name) + "</bdi>";
}

std::string TitleMarkup(std::wstring_view text) { return MarkupWriter(Place::kTitle).Write(text); }

std::wstring CutText(const std::wstring& text, std::size_t mostCharacters) {
  if (text.size() <= mostCharacters) return text;
  std::size_t end = mostCharacters;
  if (end > 0 && IsHigh(static_cast<char16_t>(text[end - 1]))) --end;
  return text.substr(0, end) + L"\x2026 (" + std::to_wstring(text.size()) + L" characters)";
}

}  // namespace carrovan
