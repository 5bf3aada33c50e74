#include "restore/prune.h"

#include <chrono>

#include "platform/file_operations.h"
#include "restore/restore_point.h"

namespace carrovan {
namespace {

// What a restore point is called from the step on in which it goes.
constexpr std::wstring_view kRemoved = L".removed";

bool IsRemoved(const FolderEntry& entry) {
  return entry.isFolder && !entry.isLink && entry.name.ends_with(kRemoved) &&
         IsRestorePointId(entry.name.substr(0, entry.name.size() - kRemoved.size()));
}

void RemoveLeftovers(FileSystem& files, const std::wstring& root) {
  for (const FolderEntry& entry : ListFolder(files, root)) {
    if (IsRemoved(entry)) WipeFolder(files, root + L"\\" + entry.name);
  }
}

}  // namespace

// The new name is on the disk before anything of the point is lost.
bool RemoveRestorePoint(FileSystem& files, const std::wstring& root, const std::wstring& id) {
  const std::wstring removed = root + L"\\" + id + std::wstring(kRemoved);
  if (files.MoveTo(root + L"\\" + id, removed) != kSystemOk) return false;
  return files.Flush({&root, 1}) == kSystemOk && WipeFolder(files, removed);
}

PruneReport PruneRestorePoints(FileSystem& files, const Clock& clock, const std::wstring& root,
                               const PruneChoice& choice) {
  PruneReport report;
  RemoveLeftovers(files, root);
  const auto oldest =
      RestorePointId(clock.Now() - std::chrono::days(choice.olderThanDays.value_or(0)));
  const std::vector<std::wstring> ids = RestorePointIds(files, root);
  for (std::size_t i = choice.keep; i < ids.size(); ++i) {
    if (choice.olderThanDays && ids[i] >= oldest) continue;
    const std::uint64_t bytes = TreeBytes(files, root + L"\\" + ids[i]);
    if (RemoveRestorePoint(files, root, ids[i])) {
      report.removed.push_back({ids[i], bytes});
    } else {
      report.failed.push_back(ids[i]);
    }
  }
  return report;
}

}  // namespace carrovan
