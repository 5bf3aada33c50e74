#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "platform/file_system.h"

namespace carrovan {

// How an import or a reset went, for a face that tells more than the wizard does.
struct ImportReport {
  std::vector<std::wstring> problems;  // one line each, in the order of the run
  std::size_t unextracted = 0;         // items that were not unpacked; the view was told of each

  bool IsComplete() const { return problems.empty() && unextracted == 0; }
};

// Removes a folder with its content; one that stays behind is a problem. A folder that is not there
// is none.
void WipeOrReport(FileSystem& files, const std::wstring& folder, ImportReport& report);

}  // namespace carrovan
