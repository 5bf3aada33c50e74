#pragma once

#include <optional>
#include <string>

#include "platform/file_system.h"
#include "platform/reg_file_parser.h"

namespace carrovan {

// What the registry tool makes of a file; nothing for one that it cannot read or refuses.
std::optional<RegFile> ReadRegFile(const FileReader& files, const std::wstring& path);

}  // namespace carrovan
