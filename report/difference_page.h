#pragma once

#include <string>

#include "compare/package_difference.h"
#include "report/report_page.h"

namespace carrovan {

// The page of a comparison, by category. The two sides are called as given: a package's path, or
// "version 2026".
ReportPage PageOfDifference(const std::wstring& first, const std::wstring& second,
                            const PackageDifference& difference, const std::wstring& program);

}  // namespace carrovan
