#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "cli/session.h"
#include "platform/text.h"

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

}  // namespace carrovan
