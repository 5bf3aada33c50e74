#pragma once

#include <optional>
#include <string>

#include "environment/version_folders.h"
#include "platform/machine.h"
#include "preview/preview_report.h"
#include "restore/restore_point.h"
#include "restore/undo_run.h"

namespace carrovan {

// What an undo would do.
struct UndoTrial {
  UndoReport report;
  PreviewReport changes;
};

// Tries an undo out and changes nothing. None, with the reason, when there is no place for that.
// Without places everything that changes is of no category.
OrReason<UndoTrial> TryUndo(const RestorePoint& point, const UndoChoice& choice,
                            const std::optional<CategoryPlaces>& places, const Machine& machine);

}  // namespace carrovan
