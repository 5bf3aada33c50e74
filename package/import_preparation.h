#pragma once

#include "package/import_run.h"

namespace carrovan {

// From a chosen package to its list of categories.

// A value of the package's description. A missing or empty one reads "Please check the file.".
std::wstring ReadConfigValue(const std::wstring& key, const std::wstring& section,
                             const std::wstring& path, const ProfileReader& profiles);

// Unpacks the package into the staging folder, over what is there, and reads its description into
// the package state.
void OpenPackage(const ImportRun& run);

// False, after the user was told why, when the package is newer than the target or the target was
// never started by this user, which no product is whose company or name is not one plain name.
bool CheckTarget(const ImportRun& run);

// Finds the target's folders, mends paths and versions in a package of another release, and fills
// the tree with the categories that the package marks. False, after the user was told why, when the
// package is of another release and the target's folders are missing, or when the system cannot
// tell the user's folders: nothing can be imported then.
bool RunImportPreparation(const ImportRun& run, EditableCategoryTree& tree);

}  // namespace carrovan
