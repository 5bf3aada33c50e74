#pragma once

#include <span>
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

std::wstring_view Text(StringId id);

}  // namespace carrovan
