#pragma once

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

namespace carrovan {

// The texts of resources/strings.inc by name; the enumerator's value is the text's number.
enum class StringId : int {
#define CARROVAN_STRING(number, name, text) name = number,
#include "resources/strings.inc"
#undef CARROVAN_STRING
};

struct StringTableEntry {
  StringId id;
  std::wstring_view text;
};

// The whole table in ascending order of numbers.
std::span<const StringTableEntry> StringTable();

// In English.
std::wstring_view Text(StringId id);

// Where a face takes its texts from: its resources in the user's language, or the table.
class TextSource {
 public:
  virtual ~TextSource() = default;
  virtual std::wstring Text(StringId id) const = 0;

  // The text with "%1", "%2" and so on replaced by the parts, in any order.
  std::wstring Filled(StringId id, std::initializer_list<std::wstring_view> parts) const;
};

// The table's own texts.
const TextSource& EnglishTexts();

}  // namespace carrovan
