#pragma once

#include <memory>
#include <string>

#include "platform/saved_document.h"

namespace carrovan {

// Encodes as the system's code page of that name does; only what the code page reads back as the
// same character counts as held by it. Null for a name that the system does not know.
std::unique_ptr<DocumentEncoder> OpenCodePageEncoder(const std::string& encoding);

}  // namespace carrovan
