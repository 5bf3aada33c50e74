#pragma once

#include "wizard/wizard_parts.h"

namespace carrovan {

// The steps of a reset.

// Fills the page's tree. False, after the user was shown why, without the version's folders.
bool EnterResetCategories(const WizardParts& parts);

// Shows what the reset of the ticked categories would change.
void ShowChangesOfReset(const WizardParts& parts);

enum class ResetAnswer {
  kDone,
  kDeclined,  // the user answered No
  // The product runs, another run is at work, or no restore point can be kept and the user does not
  // go on.
  kRefused,
};

// Asks, resets the ticked categories, keeps a restore point and fills the finish page.
ResetAnswer ConfirmAndReset(const WizardParts& parts);

}  // namespace carrovan
