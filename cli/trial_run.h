#pragma once

#include <optional>

#include "cli/applied_run.h"
#include "preview/machine_changes.h"

namespace carrovan {

// A run that was tried out on an overlay of the machine.
struct TrialRun {
  std::optional<AppliedRun> applied;  // nothing when the run was refused
  MachineChanges changes;             // what it would change
};

enum class TrialWords {
  kNone,     // the real run will say them
  kRefusals  // on standard error, why nothing would be done
};

// Tries the run out; the machine stays as it is. Nothing, after saying why, when there is no place
// for an overlay.
std::optional<TrialRun> TryOut(const Session& session, const Machine& machine, const Run& run,
                               TrialWords words);

}  // namespace carrovan
