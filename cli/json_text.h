#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "cli/session.h"
#include "text/text.h"

namespace carrovan {

// Prints a document indented for people; texts in it are UTF-8.
inline void PrintJsonText(const Session& session, const nlohmann::json& document) {
  session.Print(FromUtf8(document.dump(2, ' ', false, nlohmann::json::error_handler_t::replace)));
}

// A list of texts.
inline nlohmann::json TextsToJson(const std::vector<std::wstring>& texts) {
  nlohmann::json list = nlohmann::json::array();
  for (const std::wstring& text : texts) list.push_back(ToUtf8(text));
  return list;
}

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
