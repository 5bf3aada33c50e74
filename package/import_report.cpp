#include "package/import_report.h"

#include "platform/file_operations.h"

namespace carrovan {

void WipeOrReport(FileSystem& files, const std::wstring& folder, ImportReport& report) {
  if (!WipeFolder(files, folder)) report.problems.push_back(L"Not removed whole: " + folder);
}

}  // namespace carrovan
