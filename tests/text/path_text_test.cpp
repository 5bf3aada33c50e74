#include "text/path_text.h"

#include <gtest/gtest.h>

#include "text/text.h"

namespace carrovan {
namespace {

TEST(PathText, KnowsBothSeparatorsAtTheEnd) {
  EXPECT_TRUE(EndsInSeparator(L"C:\\a\\"));
  EXPECT_TRUE(EndsInSeparator(L"a/"));
  EXPECT_FALSE(EndsInSeparator(L"a"));
  EXPECT_FALSE(EndsInSeparator(L""));
}

TEST(PathText, AddsATrailingBackslashOnce) {
  EXPECT_EQ(WithTrailingBackslash(L"C:\\a"), L"C:\\a\\");
  EXPECT_EQ(WithTrailingBackslash(L"C:\\a\\"), L"C:\\a\\");
  EXPECT_EQ(WithTrailingBackslash(L"a/"), L"a/");
  EXPECT_EQ(WithTrailingBackslash(L""), L"\\");
}

TEST(PathText, RemovesTheLastComponent) {
  const struct {
    const wchar_t* path;
    const wchar_t* expected;
  } kRows[] = {
      {L"C:\\A\\B", L"C:\\A"},
      {L"C:\\A\\B\\", L"C:\\A\\B"},
      {L"C:\\A", L"C:\\"},
      {L"C:\\", L"C:\\"},
      {L"C:", L"C:"},
      {L"C:A", L"C:"},
      {L"A\\B", L"A"},
      {L"A", L""},
      {L"", L""},
      {L"\\A", L"\\"},
      {L"\\", L"\\"},
      {L"\\\\server\\share\\A", L"\\\\server\\share"},
      {L"\\\\server\\share", L"\\\\server\\share"},
      {L"\\\\server", L"\\\\server"},
      {L"C:\\A/B", L"C:\\"},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(RemoveFileSpec(row.path), row.expected) << ToUtf8(row.path);
  }
}

TEST(PathText, TakesTheNameBehindTheLastSeparator) {
  EXPECT_EQ(FileNameOf(L"C:\\A\\b.txt"), L"b.txt");
  EXPECT_EQ(FileNameOf(L"/folder/b.txt"), L"b.txt");
  EXPECT_EQ(FileNameOf(L"b.txt"), L"b.txt");
  EXPECT_EQ(FileNameOf(L"C:\\A\\"), L"");
  EXPECT_EQ(FileNameOf(L""), L"");
}

}  // namespace
}  // namespace carrovan
