#pragma once

#include <string>

#include "environment/product_context.h"

namespace carrovan {

// Tests whether the user has started a version of the product once, which made its per-user key.
// A version that fails is told to the view: "Please run Vantric at least once".

// Tells so in any case; false.
bool TellToRunProductOnce(WizardView& view);

// The version in the context, by its live key.
bool PassesLiveKeyCheck(WizardView& view, const RegistryReader& registry,
                        const ProductContext& context);

// The version that a package is imported into, with the company and product that the package names:
// either "product version" or the subkey "product\version" is enough.
bool PassesVersionCheck(WizardView& view, const RegistryReader& registry,
                        const std::wstring& company, const std::wstring& product,
                        const std::wstring& version);

}  // namespace carrovan
