#pragma once

#include <filesystem>
#include <system_error>

#include "platform/system_code.h"

namespace carrovan {

// Permissions do not bind the host's administrator. On a machine in a folder they bind everybody:
// what the owner of a file may not do, nobody may, so a read-only file is one for every user. Where
// nothing can be learned about the file, the answer is true and the operation itself will fail.
bool OwnerMayRead(const std::filesystem::path& path);
bool OwnerMayWrite(const std::filesystem::path& path);
bool OwnerMayWrite(const std::filesystem::file_status& status);

// True when a file may be created at the path, or the one that is there replaced.
bool MayPutFile(const std::filesystem::path& path);

// A folder itself, or a link to one.
bool LeadsToFolder(const std::filesystem::path& path);

// What a missing file's path is called: "path not found" is said of a folder on the way, "file not
// found" of the last name.
SystemCode MissingCode(const std::filesystem::path& path);

// Whether names can be made, or taken away, in the folder that the path names one in.
SystemCode CodeOfParent(const std::filesystem::path& path);

// The number that Windows has for a host's error.
SystemCode SystemCodeOf(const std::error_code& error);

}  // namespace carrovan
