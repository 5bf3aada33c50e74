#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "environment/version_folders.h"
#include "package/run_report.h"
#include "preview/machine_changes.h"

namespace carrovan {

// What a run changes, by category, for a face to show.

struct PreviewedFile {
  FileChange change;
  bool isMerged = false;  // replaced by what came of a merge
};

// Folders are items but are not counted.
struct PreviewSummary {
  std::size_t filesAdded = 0;
  std::size_t filesReplaced = 0;  // without the merged ones
  std::size_t filesMerged = 0;
  std::size_t filesRemoved = 0;
  std::size_t valuesAdded = 0;
  std::size_t valuesChanged = 0;
  std::size_t valuesRemoved = 0;
  std::size_t valuesDropped = 0;

  bool operator==(const PreviewSummary&) const = default;
};

struct PreviewedCategory {
  const CategoryRecord* record = nullptr;  // null for what is no category's
  std::wstring label;
  PreviewSummary summary;
  std::vector<PreviewedFile> files;
  std::vector<KeyChange> keys;
  std::vector<ValueChange> values;
  std::vector<DroppedValue> dropped;
};

// The categories in which something changes, in the order of the table; what changes outside of all
// comes last, as "Other".
struct PreviewReport {
  std::vector<PreviewedCategory> categories;
  std::vector<ImportedPath> paths;  // of an import
};

PreviewReport MakePreviewReport(const MachineChanges& changes, const RunReport& run,
                                const CategoryPlaces& places);

}  // namespace carrovan
