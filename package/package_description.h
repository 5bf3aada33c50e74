#pragma once

#include "environment/product_context.h"
#include "environment/setting_category.h"

namespace carrovan {

// File name of a package's description, in the archive and in the staging folder.
inline constexpr wchar_t kPackageDescriptionName[] = L"config.ini";

// Sections and keys of the description. Readers ask for the base section in capitals: profile names
// compare without regard to case.
inline constexpr wchar_t kSelectedSection[] = L"Selected";
inline constexpr wchar_t kBaseSection[] = L"Base";
inline constexpr wchar_t kCompanyKey[] = L"COMPANY";
inline constexpr wchar_t kInternalVersionKey[] = L"INTERNAL VERSION";
inline constexpr wchar_t kReleaseVersionKey[] = L"RELEASE VERSION";
inline constexpr wchar_t kProductKey[] = L"PRODUCT";

// Writes the description afresh at `packageDescriptionPath`: "1" under each category's label, in
// their order, then where the package comes from. IsDescriptionWritten says whether it is
// there.
void WritePackageDescription(const ProductContext& context, const Machine& machine,
                             const CategorySet& chosen);

// True when the description reads back as WritePackageDescription was to write it, and marks no
// other category. A full disk cuts a file short, and not every system says so.
bool IsDescriptionWritten(const ProductContext& context, const ProfileReader& profiles,
                          const CategorySet& chosen);

}  // namespace carrovan
