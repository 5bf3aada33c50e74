#pragma once

#include <string>
#include <string_view>

#include "platform/file_system.h"

namespace carrovan {

// The first component of a path, between backslashes, that is a version such as "27.0": digits and
// exactly one dot, which is neither first nor last. Empty when there is none.
std::wstring VersionComponentOf(std::wstring_view path);

// Renames a folder whose last component holds the old text; case counts. A name of the drafting
// product of 2025 becomes that of 2024. On success `path` is the new path; on failure, and when
// there is nothing to rename, it stays. kSystemOk unless a renaming failed.
SystemCode RenameFolderPart(std::wstring& path, std::wstring_view oldText,
                            std::wstring_view newText, FileSystem& files);

}  // namespace carrovan
