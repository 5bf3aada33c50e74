#pragma once

#include "environment/setting_category.h"
#include "package/import_run.h"

namespace carrovan {

// What an import does for one category. The staging folder is edited until it holds exactly what is
// to land in the user's profile: a ticked category takes the target's own copy away, so that the
// package's replaces it, an unticked one takes away the package's.

void ApplyCategory(const ImportRun& run, SettingCategory category, bool ticked);

// Removes root + "\" + name + subfolder for each of the context's languages.
void RemoveSubfolderInEach(const ImportRun& run, const std::wstring& root,
                           const std::wstring& subfolder);

// The 2D drafting settings lie in a product folder of their own, whose layout is the drafting
// program's, in the user's Local and Roaming folders alike.

// Carries menu and shortcut files over and takes the target's folders away, so that the package's
// replace them.
void ReplaceDraftingFolders(const ImportRun& run);

// Takes the folders out of the package.
void DropDraftingFolders(const ImportRun& run);

// Copies the files that the drafting program names ".UIK" and ".ACC", in any case, over namesakes
// in the destination, in subfolders as well when `recursive` is set. With `sameRelease` nothing is
// copied: the files already fit. Every failure is passed over, and so are links, both folders
// included: what lies behind one stays as it is.
void CopyProductFolderTree(FileSystem& files, const std::wstring& source,
                           const std::wstring& destination, bool recursive, bool sameRelease);

}  // namespace carrovan
