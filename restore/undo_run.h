#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/machine.h"
#include "restore/restore_point.h"

namespace carrovan {

// What an undo shall put back.
struct UndoChoice {
  bool force = false;    // also what was changed since by somebody else
  bool trusted = false;  // also what only the import of a trusted package can have changed
  // Nothing for everything.
  std::function<bool(const FileHistory&)> includesFile;
  std::function<bool(const KeyHistory&)> includesKey;
};

struct UndoReport {
  std::size_t restored = 0;            // files, folders and values that were put back or removed
  std::vector<std::wstring> kept;      // one line for each that was changed since and stays
  std::vector<std::wstring> problems;  // one line for each that could not be put back
  std::vector<std::wstring> refused;   // why the journal was not played, of which then nothing was

  bool IsComplete() const { return kept.empty() && problems.empty() && refused.empty(); }
};

// Puts back what the run of a restore point changed: first the registry, then files and folders.
// What is as it was before already is left alone, so that an undo that was killed, or was done, can
// be done again. What the run made is recognised by what it left behind; anything else is somebody
// else's work and stays unless forced. Files and values that others added stay always. A journal
// that names what no run changes is refused as a whole (RefusalsOfPoint).
UndoReport UndoChanges(const RestorePoint& point, const UndoChoice& choice, const Machine& machine);

}  // namespace carrovan
