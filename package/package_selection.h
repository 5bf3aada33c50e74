#pragma once

#include "package/import_run.h"
#include "wizard/wizard_view.h"

namespace carrovan {

// What choosing a package on the path page works with.
struct PackageSelection {
  ImportRun run;
  WizardState& state;  // with the run's package in it
  PathPageView& page;
};

// Asks for a package and takes it as the one to import. A legacy package is unpacked at once, since
// its document tells the version that it is for; one without exactly one XML document is refused
// with "File corruption". Whoever cancels, or chooses a package that is refused, goes on with what
// was chosen before: its path, what was unpacked of it, and the versions on the page.
void SelectPackage(const PackageSelection& selection);

// Unpacks a legacy package into a fresh staging folder, which takes the place of the one in use,
// and finds its document. Nothing, after the view was told, when there is no folder or the package
// does not hold exactly one document; then nothing has changed. Otherwise the text for the version
// list: what the document names, or else the default, and then the document is made to name the
// target version.
std::optional<std::wstring> OpenLegacyPackage(const ImportRun& run, const std::wstring& path);

// Full path of the only XML file directly in a folder, whose path ends in a backslash; empty when
// there is none or more than one.
std::wstring FindSingleXml(const FileReader& files, const std::wstring& folder);

}  // namespace carrovan
