#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <vector>

#include "support/zip/os_file.h"

namespace carrovan {

// Small host files, read and written whole. Permissions are those of host_access.h.

inline constexpr std::size_t kLargestHostFile = std::size_t{256} << 20;

// kFailed also for what is no regular file and for one above the size limit. The content is filled
// only on success.
[[nodiscard]] FileStatus ReadHostFile(const std::filesystem::path& path,
                                      std::vector<std::uint8_t>& content);

// Puts a file with this content in place of the one that may be there, in one step; on failure that
// one is as it was.
[[nodiscard]] FileStatus ReplaceHostFile(const std::filesystem::path& path,
                                         std::span<const std::uint8_t> content);

}  // namespace carrovan
