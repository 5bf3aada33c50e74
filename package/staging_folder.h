#pragma once

#include "environment/product_context.h"

namespace carrovan {

// The staging folder is where a package's pieces are prepared and where a package is unpacked: a
// fresh folder below the temporary path, named by a GUID without braces.

// Creates the folder and stores its path, with a trailing backslash, in `stagingFolder`. A folder
// of that name that is there already is taken. False, with the context unchanged, when the system
// gives no temporary path or no GUID, or the folder cannot be made.
bool CreateStagingFolder(ProductContext& context, const Machine& machine);

// Deletes the folder with its content; nothing happens when there is none.
void DeleteStagingFolder(const ProductContext& context, const Machine& machine);

// Deletes the old folder, creates a fresh one and points `packageDescriptionPath` into it.
bool RenewStagingFolder(ProductContext& context, const Machine& machine);

}  // namespace carrovan
