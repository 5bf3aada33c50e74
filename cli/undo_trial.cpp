#include "cli/undo_trial.h"

#include <memory>

#include "preview/overlay_machine.h"
#include "text/path_text.h"

namespace carrovan {
namespace {

// An undo notes in the restore point what it did and puts links back from it.
void ForgetPoint(const RestorePoint& point, MachineChanges& changes) {
  const std::wstring folder = TidyPath(point.folder);
  std::erase_if(changes.files,
                [&](const FileChange& change) { return IsAtOrBelow(change.path, folder); });
}

}  // namespace

OrReason<UndoTrial> TryUndo(const RestorePoint& point, const UndoChoice& choice,
                            const std::optional<CategoryPlaces>& places, const Machine& machine) {
  const OrReason<OverlayMachine> overlay = OverlayMachine::Open(machine);
  if (!overlay.object) return {nullptr, overlay.reason};
  auto trial = std::make_unique<UndoTrial>();
  trial->report = UndoChanges(point, choice, overlay.object->Ports());
  MachineChanges changes = overlay.object->Changes();
  ForgetPoint(point, changes);
  const CategoryPlaces none(ProductContext{}, machine);
  trial->changes = MakePreviewReport(changes, {}, places ? *places : none);
  return {std::move(trial), {}};
}

}  // namespace carrovan
