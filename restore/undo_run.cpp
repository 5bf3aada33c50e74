#include "restore/undo_run.h"

#include "restore/point_check.h"
#include "restore/restore_folder.h"
#include "restore/undo_steps.h"

namespace carrovan {

UndoReport UndoChanges(const RestorePoint& point, const UndoChoice& choice,
                       const Machine& machine) {
  UndoReport report;
  if (point.files.empty() && point.keys.empty() && point.scratch.empty()) return report;
  report.refused = RefusalsOfPoint(point, choice.trusted, machine);
  if (!report.refused.empty()) return report;
  UndoKeys(point, choice, machine, report);
  UndoFiles(point, choice, machine.files, report);
  const bool everything = !choice.includesFile && !choice.includesKey;
  const Undone undone{everything && report.IsComplete()};
  const SystemCode code =
      machine.files.AppendBytes(point.folder + L"\\" + kJournalName, EncodeRecord(undone));
  if (code != kSystemOk) {
    report.problems.push_back(L"Not noted in " + point.folder + L": " + DescribeSystemCode(code));
  }
  return report;
}

}  // namespace carrovan
