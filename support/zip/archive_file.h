#pragma once

#include <filesystem>
#include <vector>

#include "platform/archive_library.h"
#include "support/zip/os_file.h"
#include "support/zip/stored_entry.h"

namespace carrovan {

// Whether an archive must survive a power cut.
enum class Durability { kFlushed, kNotFlushed };

// Writes an archive of the entries, whose packed content lies in the spool or whose content lies at
// its source, in their order, and puts it in place of what is at the path. On failure that is as it
// was.
[[nodiscard]] ArchiveResult WriteArchiveFile(const std::filesystem::path& archive,
                                             const OsFile& spool,
                                             const std::vector<StoredEntry>& entries,
                                             Durability durability);

}  // namespace carrovan
