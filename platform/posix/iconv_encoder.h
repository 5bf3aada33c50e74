#pragma once

#include <memory>
#include <string>

#include "text/xml_text.h"

namespace carrovan {

// Encodes as the C library does, under the names that it and libxml2 know. Null for another name.
std::unique_ptr<DocumentEncoder> OpenIconvEncoder(const std::string& encoding);

}  // namespace carrovan
