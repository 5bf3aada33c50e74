#pragma once

#include "wizard/wizard_parts.h"

namespace carrovan {

// Puts back what the last import or reset changed that is not undone yet, be it one of the wizard
// or of the command line: asks first, and then says how many items came back. What was changed
// since is listed, and put back too when the user wants that. True when something was put back;
// nothing is while another run is at work, which the user is shown.
bool UndoLastRun(const WizardParts& parts);

}  // namespace carrovan
