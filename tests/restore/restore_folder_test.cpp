#include "restore/restore_point.h"

#include <gtest/gtest.h>

#include "tests/support/fakes.h"

namespace carrovan {
namespace {

TEST(RestoreFolder, LiesBelowTheUsersLocalData) {
  FixedFolders folders;
  EXPECT_EQ(RestoreRoot(folders), L"C:\\Users\\u\\AppData\\Local\\Carrovan\\Restore");
  folders.local.reset();
  EXPECT_EQ(RestoreRoot(folders), std::nullopt);
}

TEST(RestoreFolder, NamesAPointByItsUtcTime) {
  const auto at = [](long long seconds) {
    return RestorePointId(std::chrono::system_clock::time_point(std::chrono::seconds(seconds)));
  };
  EXPECT_EQ(at(1772600767), L"2026-03-04T050607Z");
  EXPECT_EQ(at(0), L"1970-01-01T000000Z");
  EXPECT_EQ(at(1798761599), L"2026-12-31T235959Z");
}

TEST(RestoreFolder, KnowsItsNames) {
  for (const wchar_t* name :
       {L"2026-03-04T050607Z", L"2026-03-04T050607Z-2", L"2026-03-04T050607Z-10"}) {
    EXPECT_TRUE(IsRestorePointId(name)) << name;
  }
  for (const wchar_t* name :
       {L"", L"2026-03-04T050607", L"2026-03-04T050607Z-", L"2026-03-04T050607Z-a",
        L"2026-03-04T050607Zx2", L"x026-03-04T050607Z", L"..\\2026-03-04T05", L"..",
        L"2026-03-04T050607Z-2\\.."}) {
    EXPECT_FALSE(IsRestorePointId(name)) << name;
  }
}

}  // namespace
}  // namespace carrovan
