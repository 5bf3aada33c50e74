#include "preview/overlay_tree.h"

#include <gtest/gtest.h>

namespace carrovan {
namespace {

using Names = std::vector<std::wstring>;

struct PathRow {
  const wchar_t* path;
  std::wstring root;
  Names names;
};

TEST(OverlayPath, TellsTheRootFromTheNames) {
  const PathRow kRows[] = {
      {L"C:\\a\\b", L"C:\\", {L"a", L"b"}},
      {L"C:/a/b/", L"C:\\", {L"a", L"b"}},
      {L"\\\\server\\share\\a", L"\\\\", {L"server", L"share", L"a"}},
      {L"//server/share", L"\\\\", {L"server", L"share"}},
      {L"\\a", L"\\", {L"a"}},
      {L"/a", L"\\", {L"a"}},
      {L"\\", L"\\", {}},
      {L"a\\b", L".\\", {L"a", L"b"}},
      {L"a", L".\\", {L"a"}},
  };
  for (const PathRow& row : kRows) {
    const auto parsed = ParseOverlayPath(row.path);
    ASSERT_TRUE(parsed) << testing::PrintToString(row.path);
    EXPECT_EQ(parsed->root, row.root) << testing::PrintToString(row.path);
    EXPECT_EQ(parsed->names, row.names) << testing::PrintToString(row.path);
  }
}

TEST(OverlayPath, PathsOfDifferentRootsAreDifferentPlaces) {
  const auto share = ParseOverlayPath(L"\\\\a\\b");
  const auto rooted = ParseOverlayPath(L"\\a\\b");
  ASSERT_TRUE(share && rooted);
  EXPECT_FALSE(IsSamePath(share->root, rooted->root));
}

TEST(OverlayPath, TextWithAZeroIsNoPath) {
  EXPECT_FALSE(ParseOverlayPath(std::wstring_view(L"C:\\a\0b", 6)));
  EXPECT_FALSE(ParseOverlayPath(L""));
}

}  // namespace
}  // namespace carrovan
