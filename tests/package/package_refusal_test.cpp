#include "package/package_inspection.h"

#include <gtest/gtest.h>

#include "tests/support/memory_files.h"

namespace carrovan {
namespace {

TEST(PackageRefusal, SaysWhyAFileIsNoPackage) {
  MemoryFiles files;
  files.PutFolder(L"C:\\folder");
  files.Put(L"C:\\empty", "");
  files.Put(L"C:\\text", "no archive at all");
  files.Put(L"C:\\cut", std::string("PK\3\4") + std::string(100'000, 'x'));
  files.Put(L"C:\\damaged", "PK\3\4 and so on PK\5\6 and so on");
  const std::pair<const wchar_t*, const wchar_t*> cases[] = {
      {L"C:\\none", L"C:\\none is missing"},
      {L"C:\\folder", L"C:\\folder is not a package: it is a folder"},
      {L"C:\\empty", L"C:\\empty is not a package: it is empty"},
      {L"C:\\text", L"C:\\text is not a package: it holds no zip archive"},
      {L"C:\\cut", L"C:\\cut is not a package: the end of the zip archive is missing"},
      {L"C:\\damaged",
       L"C:\\damaged is not a package: the directory of the zip archive is damaged"},
  };
  for (const auto& [path, text] : cases) EXPECT_EQ(DescribeNoPackage(files, path), text);
}

TEST(PackageRefusal, SaysWhatTheSystemSaysOfAFileThatCannotBeRead) {
  MemoryFiles files;
  files.Put(L"C:\\locked", "PK");
  files.fault = [](const std::string&, const std::wstring&) { return kSharingViolation; };
  EXPECT_EQ(DescribeNoPackage(files, L"C:\\locked"),
            L"C:\\locked cannot be read: " + DescribeSystemCode(kSharingViolation));
}

// The mark of the end may lie between two parts in which the file is read.
TEST(PackageRefusal, FindsTheEndWhereverAPartEnds) {
  MemoryFiles files;
  files.Put(L"C:\\a", "xxPK\5\6yy");
  for (files.partBytes = 1; files.partBytes < 9; ++files.partBytes) {
    EXPECT_EQ(DescribeNoPackage(files, L"C:\\a"),
              L"C:\\a is not a package: the directory of the zip archive is damaged");
  }
}

}  // namespace
}  // namespace carrovan
