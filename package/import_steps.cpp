#include "package/import_steps.h"

#include "package/import_preparation.h"
#include "package/legacy_import.h"
#include "package/package_selection.h"

namespace carrovan {

ImportSteps::Entry PackageImport::EnterCategories(EditableCategoryTree& tree) {
  run_.report = {};
  OpenPackage(run_);
  if (!CheckTarget(run_)) return Entry::kRefused;
  return RunImportPreparation(run_, tree) ? Entry::kReady : Entry::kEnded;
}

void PackageImport::Apply(EditableCategoryTree& tree) { ApplyPackage(run_, tree); }

void PackageImport::ApplyLegacy() {
  // Another run may have emptied the staging folder since the package was chosen.
  const bool unpacked = run_.machine.files.Exists(run_.package.legacyXmlPath) ||
                        OpenLegacyPackage(run_, run_.package.path).has_value();
  if (unpacked) ImportLegacyCustomization(run_);
}

}  // namespace carrovan
