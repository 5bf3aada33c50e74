#pragma once

#include <string>

#include "package/package_inspection.h"
#include "report/report_page.h"

namespace carrovan {

// The page of a package: what it holds, by the folders in it, and what is wrong with it.
ReportPage PageOfInspection(const std::wstring& package, const PackageInspection& inspection,
                            const std::wstring& program);

}  // namespace carrovan
