#pragma once

#include <string>
#include <vector>

#include "guard/guarded_run.h"
#include "package/export_run.h"

namespace carrovan {

// What the finish page lists of a run: a line for each category, then one for each item that was
// not stored, not merged, left out or failed. Of an option document, how many values were set.

std::vector<std::wstring> SummaryOfExport(const ExportReport& report, const CategorySet& offered,
                                          const CategorySet& chosen, const TextSource& texts);

// `done` is the line of a category that the run has worked on.
std::vector<std::wstring> SummaryOfRun(const GuardReport& report, StringId done,
                                       const TextSource& texts);

// Why an export has put no package in place, or an empty text.
std::wstring WhyNotWritten(const ExportReport& report);

}  // namespace carrovan
