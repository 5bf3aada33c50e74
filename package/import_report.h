#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "platform/file_system.h"

namespace carrovan {

// How an import or a reset went, for a face that tells more than the wizard does.
// A value of a package that does not get into the registry.
struct DroppedValue {
  std::wstring file;  // of the package: a registry file or an option document
  std::wstring key;   // with its hive spelled out
  std::wstring name;  // empty for the default value, and when the whole key is dropped
  std::wstring why;
};

struct ImportReport {
  std::vector<std::wstring> problems;  // one line each, in the order of the run
  std::size_t unextracted = 0;         // items that were not unpacked; the view was told of each

  // Values that an option document of a legacy package has set; nothing for any other package.
  std::optional<std::size_t> optionsSet;

  std::vector<std::wstring> merged;   // files of the profile whose new content came of a merge
  std::vector<DroppedValue> dropped;  // in the order of the run

  bool IsComplete() const { return problems.empty() && unextracted == 0; }
};

// Removes a folder with its content; one that stays behind is a problem. A folder that is not there
// is none.
void WipeOrReport(FileSystem& files, const std::wstring& folder, ImportReport& report);

}  // namespace carrovan
