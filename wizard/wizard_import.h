#pragma once

#include <optional>
#include <string>
#include <vector>

#include "guard/guarded_run.h"
#include "wizard/wizard_parts.h"

namespace carrovan {

// The import that the user is about to make.
struct WizardImport {
  RunReport report;
  CategorySet offered;     // on the page of its categories
  bool isTrusted = false;  // the user takes the package in spite of the reasons against it
};

// The steps of an import.

void TakeVersionToImportInto(const WizardParts& parts);

// Takes a package as the one to import: shows it and the versions that it can go to. A legacy
// package is unpacked at once, since its document names the version that it is for. Of a package
// that is refused, or that the user does not want when its reasons for distrust are listed, nothing
// is taken.
void TakePackage(const WizardParts& parts, WizardImport& import, PathPageView& page,
                 const std::wstring& path);

// The same for the package that the user chooses now, if any.
void ChoosePackage(const WizardParts& parts, WizardImport& import, PathPageView& page);

// Unpacks the package and fills the page's tree. False when the user stays on the path page or the
// program ends.
bool EnterImportCategories(const WizardParts& parts, WizardImport& import);

// Shows what the import of the ticked categories would change.
void ShowChangesOfImport(const WizardParts& parts, const WizardImport& import);

// Imports the ticked categories, keeps a restore point and fills the finish page. False when the
// user stays on the categories.
bool Import(const WizardParts& parts, WizardImport& import);

// The same for a legacy package, which has no categories; false leaves the user on the path page.
bool ImportLegacyPackage(const WizardParts& parts, WizardImport& import);

}  // namespace carrovan
