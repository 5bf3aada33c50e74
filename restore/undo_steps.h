#pragma once

#include "restore/undo_run.h"

namespace carrovan {

// The steps of an undo: files and folders, and the registry.

void UndoFiles(const RestorePoint& point, const UndoChoice& choice, FileSystem& files,
               UndoReport& report);

void UndoKeys(const RestorePoint& point, const UndoChoice& choice, const Machine& machine,
              UndoReport& report);

}  // namespace carrovan
