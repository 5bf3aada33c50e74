#pragma once

#include "environment/product_context.h"

namespace carrovan {

// Fills `installedVersions`: the version keys under the product's machine key whose number is above
// 20.0, in registry order and only up to the running version's own key (later ones are never
// offered), then the running version. Without a machine key the running version stands alone.
void EnumerateInstalledVersions(ProductContext& context, const RegistryReader& registry);

// True when the installed version has been started by this user, which creates its per-user key.
bool HasBeenRun(const ProductContext& context, const RegistryReader& registry);

}  // namespace carrovan
