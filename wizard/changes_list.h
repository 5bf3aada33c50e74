#pragma once

#include <vector>

#include "preview/preview_report.h"
#include "wizard/wizard_frame.h"

namespace carrovan {

// What a run would change, as lines to read: each category with its numbers, below it the emptied
// category's warning, files, keys and values, what becomes of values below these.
std::vector<ListedLine> ListChanges(const PreviewReport& report, const CategorySet& emptied,
                                    const TextSource& texts);

// The same as a text file: UTF-8 with its mark, a line each, deeper lines indented.
std::string ListAsFile(const std::wstring& heading, const std::vector<ListedLine>& lines);

}  // namespace carrovan
