#pragma once

#include "guard/guarded_run.h"
#include "wizard/wizard_parts.h"

namespace carrovan {

// The guarding of the wizard's runs, of imports and resets alike.

// Runs with a restore point. When none can be kept, the user decides whether to go on without one;
// nothing was run then when he does not want that, nor while another run is at work, which he was
// shown.
std::optional<GuardReport> RunWithRestorePoint(const WizardParts& parts, const PointBegun& about,
                                               const Run& run);

// Tries the run out and shows in a window what it would change.
void ShowChangesOf(const WizardParts& parts, const PointBegun& about, StringId heading,
                   const Run& run);

// Puts what the report says on the finish page. `done` is the line of a category that was worked
// on.
void ShowFinish(const WizardParts& parts, const GuardReport& report, StringId done);

}  // namespace carrovan
