#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/file_system.h"
#include "platform/system_facts.h"

namespace carrovan {

// Which restore points go. None does by itself, whatever its age.
struct PruneChoice {
  std::size_t keep = 0;              // so many of the newest stay
  std::optional<int> olderThanDays;  // of the others only those that are older than this
};

struct PrunedPoint {
  std::wstring id;
  std::uint64_t freedBytes = 0;
};

struct PruneReport {
  std::vector<PrunedPoint> removed;
  std::vector<std::wstring> failed;  // ids of those that could not be removed whole
};

// Removes one restore point in one step: however that ends, it can be undone or is not listed any
// more. False when not all of it could be removed.
bool RemoveRestorePoint(FileSystem& files, const std::wstring& root, const std::wstring& id);

// Removes restore points, newest first, and what an earlier pruning that was cut short has
// left.
PruneReport PruneRestorePoints(FileSystem& files, const Clock& clock, const std::wstring& root,
                               const PruneChoice& choice);

}  // namespace carrovan
