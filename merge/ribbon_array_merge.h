#pragma once

#include <vector>

#include "merge/ribbon_element.h"

namespace carrovan {

// Adds to the second list copies of the records of the first, or of their children, whose
// identifiers the second list lacks. A copy is placed behind the record of the second list that
// shares the most identifiers with the record it comes from, the first of equals. False when the
// second list lacks nothing. Identifiers are looked at on two levels: records and their children.
bool MergeRibbonElementArrays(const std::vector<sRibbonElement>& first,
                              std::vector<sRibbonElement>& second);

}  // namespace carrovan
