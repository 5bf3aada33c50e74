#pragma once

#include <string>
#include <string_view>

namespace carrovan {

// JSON may hold half of a surrogate pair as an escape ("\ud83d"), but the JSON library takes no
// such text. These carry halves past it, each as a mark and a character that stands for it; a mark
// of the text itself is doubled.

// Text for the library, and the library's text as it was meant.
std::string ToJsonLibrary(std::wstring_view text);
std::wstring FromJsonLibrary(std::string_view text);

// A JSON document as the library prints it, with escapes in place of the carried halves; and a
// document with such escapes as the library reads it.
std::wstring PrintedJson(std::string_view printed);
std::string ReadableJson(std::string_view document);

}  // namespace carrovan
