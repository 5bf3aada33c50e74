#pragma once

#include <nlohmann/json.hpp>

#include "cli/session.h"
#include "platform/text.h"

namespace carrovan {

// Prints a document indented for people; texts in it are UTF-8.
inline void PrintJsonText(const Session& session, const nlohmann::json& document) {
  session.Print(FromUtf8(document.dump(2, ' ', false, nlohmann::json::error_handler_t::replace)));
}

}  // namespace carrovan
