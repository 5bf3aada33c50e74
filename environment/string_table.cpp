#include "environment/string_table.h"

#include <algorithm>

namespace carrovan {
namespace {

constexpr StringTableEntry kTable[] = {
#define CARROVAN_STRING(number, name, text) {StringId::name, L##text},
#include "resources/strings.inc"
#undef CARROVAN_STRING
};

}  // namespace

std::span<const StringTableEntry> StringTable() { return kTable; }

std::wstring_view Text(StringId id) {
  const auto at = std::lower_bound(
      std::begin(kTable), std::end(kTable), id,
      [](const StringTableEntry& entry, StringId wanted) { return entry.id < wanted; });
  return at != std::end(kTable) && at->id == id ? at->text : std::wstring_view();
}

std::wstring TextSource::Filled(StringId id, std::initializer_list<std::wstring_view> parts) const {
  const std::wstring text = Text(id);
  std::wstring filled;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isPlace = text[i] == L'%' && i + 1 < text.size() && text[i + 1] >= L'1' &&
                         static_cast<std::size_t>(text[i + 1] - L'1') < parts.size();
    if (!isPlace) {
      filled.push_back(text[i]);
      continue;
    }
    filled += parts.begin()[text[++i] - L'1'];
  }
  return filled;
}

const TextSource& EnglishTexts() {
  class Table : public TextSource {
   public:
    std::wstring Text(StringId id) const override { return std::wstring(carrovan::Text(id)); }
  };
  static const Table kTexts;
  return kTexts;
}

}  // namespace carrovan
