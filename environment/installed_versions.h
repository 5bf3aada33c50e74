#pragma once

#include <string>
#include <string_view>

#include "environment/product_context.h"
#include "platform/system_facts.h"

namespace carrovan {

// A version appears in two forms: the year form that the user sees ("2025") and the internal form
// of registry key names ("27.0").

// The product numbers its releases from 1998: internal version = year - 1998.
inline constexpr int kFirstReleaseYear = 1998;

// The number at the front of a text as the C library reads it: blanks, a sign, decimal digits. Text
// without a number gives 0; a number that an int cannot hold gives the nearest one.
int LeadingInteger(std::wstring_view text);

// Likewise with a fraction and an exponent. Text without a number, and one that is too large or too
// small to hold, gives 0.
double LeadingNumber(std::wstring_view text);

// "27.0" gives "2025"; the fraction of the internal form is cut.
std::wstring YearForm(std::wstring_view internalForm);

// "2025" gives "27.0".
std::wstring InternalForm(std::wstring_view yearForm);

// Fills `installedVersions`: the version keys under the product's machine key whose number is above
// 20.0, in registry order and only up to the running version's own key (later ones are never
// offered), then the running version. Without a machine key the running version stands alone.
void EnumerateInstalledVersions(ProductContext& context, const RegistryReader& registry);

// True when the installed version has been started by this user, which creates its per-user key.
bool HasBeenRun(const ProductContext& context, const RegistryReader& registry);

// The same of the version that a package is imported into, with the company and product that the
// package names: either key, "product version" or the subkey "product\version", is enough.
bool HasBeenRun(const std::wstring& company, const std::wstring& product,
                const std::wstring& version, const RegistryReader& registry);

// True while the CAD product runs: settings that it holds open must not be moved under its feet.
bool IsProductRunning(const ProcessList& processes);

}  // namespace carrovan
