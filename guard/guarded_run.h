#pragma once

#include <functional>
#include <string>
#include <vector>

#include "environment/product_context.h"
#include "environment/setting_category.h"
#include "package/run_report.h"
#include "platform/console.h"
#include "platform/machine.h"
#include "preview/machine_changes.h"
#include "restore/journal_record.h"

namespace carrovan {

// What guards a run against surprises: it can be tried out first, taken back afterwards, and read
// back. The run itself does not know.

// What an import or a reset did, or why it was not carried out.
struct RunOutcome {
  std::vector<std::wstring> refusals;  // one line each; empty when the run was carried out
  std::vector<std::wstring> notices;   // what is reported of it besides
  RunReport report;
  std::wstring finishText;
  CategorySet offered;  // none for a legacy package
  CategorySet chosen;
  ProductContext context;       // of the version that it worked on
  std::wstring packageVersion;  // the release that a package is of; empty for a reset
};

// One run on a machine, which may be the real one or stand in front of it. The lines of its log go
// to the log that it gets.
using Run = std::function<RunOutcome(const Machine& machine, LineLog& log)>;

// A run that was tried out: what it would change, and the machine as it would be then.
struct Trial {
  const MachineChanges& changes;
  const RunOutcome& outcome;
  const Machine& before;
  const Machine& after;
};

struct GuardChoice {
  bool dryRun = false;  // only try it out
  bool verify = false;  // read back what was to be changed
  bool noRestorePoint = false;

  // A folder of the run's own, named by a GUID in the temporary path, that was made before the run;
  // empty for none. What happens in it is nobody's data.
  std::wstring ownFolder;

  // Looks at what the run changes; nothing for nobody. A run in earnest is tried out first, too.
  // Not called when the run is refused.
  std::function<void(const Trial&)> onTrial;
};

// Why the run was not even begun.
enum class GuardFailure {
  kNone,
  kAnotherRun,  // has the right to change the user's settings; the reason names it
  kNoPlaceForTrial,
  kNoRestorePoint,
};

struct GuardReport {
  GuardFailure failure = GuardFailure::kNone;
  std::wstring reason;  // then: one line
  RunOutcome outcome;
  PointBegun about;                       // the run, with the version that it worked on
  MachineChanges changes;                 // what it would change, when it was only tried out
  std::wstring restorePoint;              // the id of the one that can be undone; empty without one
  std::size_t foreseen = 0;               // changes that were read back
  std::vector<std::wstring> differences;  // of these, one line for each that is not as foreseen

  bool WasCarriedOut() const { return failure == GuardFailure::kNone && outcome.refusals.empty(); }
};

// Runs in the chosen way, alone among the user's runs unless it is only tried out. What killed runs
// left in the temporary path goes first. `about` is what a restore point says of the run. The lines
// of the run's log go to `log`, and stay in the restore point.
GuardReport RunGuarded(const Machine& machine, const GuardChoice& choice, const PointBegun& about,
                       LineLog& log, const Run& run);

}  // namespace carrovan
