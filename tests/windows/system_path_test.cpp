#include "platform/windows/windows_file_system.h"

#include <gtest/gtest.h>

#include "text/text.h"

namespace carrovan {
namespace {

// A path of that many characters below "C:\".
std::wstring PathOfLength(std::size_t length) {
  std::wstring path = L"C:";
  while (path.size() + 41 <= length) path += L"\\" + std::wstring(40, L'a');
  if (path.size() < length) path += L"\\" + std::wstring(length - path.size() - 1, L'b');
  return path;
}

TEST(SystemPath, LeavesPathsWithinTheLimitAlone) {
  for (const std::wstring& path :
       {std::wstring(), std::wstring(L"x"), std::wstring(L"C:\\A\\..\\B"), PathOfLength(247)}) {
    EXPECT_EQ(SystemPath(path), path) << ToUtf8(path);
  }
}

TEST(SystemPath, MarksLongerPaths) {
  const std::wstring path = PathOfLength(248);
  EXPECT_EQ(SystemPath(path), L"\\\\?\\" + path);
}

TEST(SystemPath, MarksAPathOnlyOnce) {
  const std::wstring marked = SystemPath(PathOfLength(300));
  EXPECT_EQ(SystemPath(marked), marked);
}

TEST(SystemPath, ResolvesWhatTheMarkedFormWouldTakeLiterally) {
  const std::wstring folder = PathOfLength(300);
  struct Row {
    std::wstring path;
    std::wstring expected;
  };
  const Row rows[] = {
      {folder + L"/x.txt", folder + L"\\x.txt"},
      {folder + L"\\\\x.txt", folder + L"\\x.txt"},
      {folder + L"\\.\\x.txt", folder + L"\\x.txt"},
      {folder + L"\\sub\\..\\x.txt", folder + L"\\x.txt"},
      {folder + L"\\*", folder + L"\\*"},
      {folder + L"\\", folder + L"\\"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(SystemPath(row.path), L"\\\\?\\" + row.expected) << ToUtf8(row.path);
  }
}

TEST(SystemPath, MarksNetworkPathsInTheirOwnForm) {
  const std::wstring tail = L"\\server\\share\\" + std::wstring(240, L'a');
  EXPECT_EQ(SystemPath(L"\\" + tail), L"\\\\?\\UNC" + tail);
}

}  // namespace
}  // namespace carrovan
