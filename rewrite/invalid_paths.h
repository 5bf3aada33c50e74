#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "platform/file_system.h"
#include "rewrite/text_form.h"

namespace carrovan {

// Drops the lines of a registry file whose string value is an absolute path that does not exist,
// and gives their number. The other lines come trimmed and each with CR LF behind it; with nothing
// to drop the bytes stay as they are. Each distinct path is asked for once.
// `tell`, where it is given, is called with each dropped line and the key line above it.
using TellDroppedLine = std::function<void(std::u16string_view keyLine, std::u16string_view line)>;
std::size_t DropInvalidPaths(std::string& fileBytes, const TextForm& form, const FileReader& files,
                             const TellDroppedLine& tell = {});

}  // namespace carrovan
