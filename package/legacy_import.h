#pragma once

#include <string>
#include <vector>

#include "package/import_run.h"

namespace carrovan {

// The import of a legacy package, which holds one document and no categories.

// How the opening of a legacy package went.
struct LegacyOpening {
  std::optional<RunRefusal> refusal;
  std::wstring targetText;                // the year of the version that the package is for
  std::vector<std::wstring> unextracted;  // where items were to be put and are not
};

// Unpacks a legacy package into a fresh staging folder, which takes the place of the one in use,
// finds its document and takes it as the package to import. Refused when there is no folder or the
// package does not hold exactly one document; then nothing has changed. The target is what the
// document names, or else the default, and then the document is made to name the target version.
LegacyOpening OpenLegacyPackage(const ImportRun& run, const std::wstring& path);

// Full path of the only XML file directly in a folder, whose path ends in a backslash; empty when
// there is none or more than one.
std::wstring FindSingleXml(const FileReader& files, const std::wstring& folder);

// The document's name decides where it goes: into both customization folders of the target, or
// value by value into the target's registry options. Any other name is imported nowhere.
void ImportLegacyCustomization(const ImportRun& run);

}  // namespace carrovan
