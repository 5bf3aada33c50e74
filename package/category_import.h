#pragma once

#include "environment/setting_category.h"
#include "package/import_run.h"

namespace carrovan {

// What an import does for one category. The staging folder is edited until it holds exactly what is
// to land in the user's profile: a ticked category takes the target's own copy away, so that the
// package's replaces it, an unticked one takes away the package's.

// `itemData` is a tree leaf's; anything but a category does nothing.
void ApplyCategory(const ImportRun& run, int itemData, bool ticked);

// Removes root + "\" + name + subfolder for each of the context's languages.
void RemoveSubfolderInEach(const ImportRun& run, const std::wstring& root,
                           const std::wstring& subfolder);

}  // namespace carrovan
