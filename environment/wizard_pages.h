#pragma once

#include "environment/product_context.h"
#include "platform/wizard_frame.h"

namespace carrovan {

// Which page and which buttons belong to a place in a mode's sequence:
//   export: start, version, categories, finish
//   import: start, path, categories, finish
//   reset:  start, categories, finish

// 3 for export and import, 2 for reset, 0 as long as no mode is chosen.
int LastPageIndex(MigrationMode mode);

// An index outside the sequence shows its nearest page.
WizardPage PageAt(MigrationMode mode, int pageIndex);

WizardButtons ButtonsAt(MigrationMode mode, int pageIndex);

}  // namespace carrovan
