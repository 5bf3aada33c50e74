#pragma once

#include <string_view>

namespace carrovan {

// The lists of texts as they stand in resources/, one for each language.

struct ListedText {
  int number;
  std::string_view name;
  std::wstring_view text;
};

#define CARROVAN_STRING(number, name, text) {number, #name, L##text},

inline constexpr ListedText kEnglishTexts[] = {
#include "resources/strings.inc"
};

inline constexpr ListedText kChineseTexts[] = {
#include "resources/strings_zh_cn.inc"
};

#undef CARROVAN_STRING

}  // namespace carrovan
