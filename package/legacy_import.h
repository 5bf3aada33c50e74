#pragma once

#include "package/import_run.h"

namespace carrovan {

// The import of a legacy package, whose document was unpacked when the package was chosen. The
// document's name decides where it goes: into both customization folders of the target, or value by
// value into the target's registry options. Any other name is imported nowhere. Sets the finish
// text.
void ImportLegacyCustomization(const ImportRun& run);

}  // namespace carrovan
