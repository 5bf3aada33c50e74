#include "package/run_report.h"

#include "environment/string_table.h"
#include "platform/file_operations.h"

namespace carrovan {

std::wstring TextOf(RunRefusal refusal) {
  switch (refusal) {
    case RunRefusal::kUnknownProduct:
      return std::wstring(Text(StringId::kCheckIniFile));
    case RunRefusal::kProductRunning:
      return std::wstring(Text(StringId::kCloseProductFirst));
    case RunRefusal::kNeverStarted:
      return std::wstring(Text(StringId::kRunProductOnce));
    case RunRefusal::kNewerPackage:
      return std::wstring(Text(StringId::kNoDowngrade));
    case RunRefusal::kFoldersMissing:
      return std::wstring(Text(StringId::kFoldersMissing));
    case RunRefusal::kNoStagingFolder:
      return L"No folder can be made in the temporary path";
    case RunRefusal::kCorruptPackage:
      return L"File corruption";
  }
  return {};
}

std::wstring TextOfUnextracted(const std::wstring& targetPath) {
  return L"Failed to extract file: " + targetPath;
}

void WipeOrReport(FileSystem& files, const std::wstring& folder, RunReport& report) {
  if (!WipeFolder(files, folder)) report.problems.push_back(L"Not removed whole: " + folder);
}

}  // namespace carrovan
