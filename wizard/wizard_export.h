#pragma once

#include "wizard/wizard_parts.h"

namespace carrovan {

// The steps of an export.

// The page shows the version that was chosen on it, whatever has been worked on since.
void TakeVersionToExport(const WizardParts& parts);

// Fills the page's tree. False, after the user was shown why, without the version's folders.
bool EnterExportCategories(const WizardParts& parts);

// Asks where to, exports the ticked categories and fills the finish page. False when the user stays
// on the categories: none is checked or no file was chosen.
bool Export(const WizardParts& parts);

// Exports every category that the version offers and says on the reset page where the package is.
void BackUpEverything(const WizardParts& parts);

// True when the folders of the version at hand are known, without which a run would look for them
// at the root of a drive. Otherwise the user has been shown why.
bool HasVersionFolders(const WizardParts& parts);

}  // namespace carrovan
