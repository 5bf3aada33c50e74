#pragma once

#include <filesystem>
#include <vector>

#include "platform/archive_library.h"
#include "support/zip/os_file.h"
#include "support/zip/stored_entry.h"

namespace carrovan {

// Writes an archive of the entries, whose packed content lies in the spool, in their order, and
// puts it in place of what is at the path. On failure that is as it was.
[[nodiscard]] ArchiveResult WriteArchiveFile(const std::filesystem::path& archive,
                                             const OsFile& spool,
                                             const std::vector<StoredEntry>& entries);

}  // namespace carrovan
