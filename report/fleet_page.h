#pragma once

#include <string>

#include "report/fleet_report.h"
#include "report/report_page.h"

namespace carrovan {

// The page about a job on many hosts, those that need attention first: numbers, a line for each
// answer, and what each said. `folder` is that of the collected answers.
ReportPage PageOfFleet(const std::wstring& folder, const FleetReport& report,
                       const std::wstring& program);

}  // namespace carrovan
