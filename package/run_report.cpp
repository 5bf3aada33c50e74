#include "package/run_report.h"

#include "platform/file_operations.h"

namespace carrovan {

namespace {

StringId TextIdOf(RunRefusal refusal) {
  switch (refusal) {
    case RunRefusal::kUnknownProduct:
      return StringId::kCheckIniFile;
    case RunRefusal::kProductRunning:
      return StringId::kCloseProductFirst;
    case RunRefusal::kNeverStarted:
      return StringId::kRunProductOnce;
    case RunRefusal::kNewerPackage:
      return StringId::kNoDowngrade;
    case RunRefusal::kFoldersMissing:
      return StringId::kFoldersMissing;
    case RunRefusal::kNoStagingFolder:
      return StringId::kNoTemporaryFolder;
    case RunRefusal::kCorruptPackage:
      return StringId::kCorruptFile;
  }
  return StringId();
}

}  // namespace

std::wstring TextOf(RunRefusal refusal, const TextSource& texts) {
  return texts.Text(TextIdOf(refusal));
}

std::wstring TextOfUnextracted(const std::wstring& targetPath, const TextSource& texts) {
  return texts.Text(StringId::kUnextracted) + targetPath;
}

void WipeOrReport(FileSystem& files, const std::wstring& folder, RunReport& report) {
  if (!WipeFolder(files, folder)) report.problems.push_back(L"Not removed whole: " + folder);
}

}  // namespace carrovan
