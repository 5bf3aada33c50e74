#include "platform/listed_kinds.h"

#include <gtest/gtest.h>

#include "tests/support/memory_files.h"

namespace carrovan {
namespace {

class ListedKindsTest : public testing::Test {
 protected:
  ListedKindsTest() {
    files_.Put(L"C:\\d\\File.txt", "x");
    files_.PutFolder(L"C:\\d\\sub");
    files_.fault = [this](const std::string& operation, const std::wstring& path) {
      if (operation != "list") return kSystemOk;
      ++lists_;
      return path == closed_ ? kAccessDenied : kSystemOk;
    };
  }

  MemoryFiles files_;
  std::wstring closed_;
  std::size_t lists_ = 0;
  ListedKinds kinds_{files_};
};

TEST_F(ListedKindsTest, SaysWhatLiesAtPathsOfAFolderThatIsListedOnce) {
  EXPECT_EQ(kinds_.At(L"C:\\d\\file.TXT"), FileKind::kFile);
  EXPECT_EQ(kinds_.At(L"C:\\D\\sub"), FileKind::kFolder);
  EXPECT_EQ(kinds_.At(L"C:\\d\\none"), FileKind::kAbsent);
  EXPECT_EQ(lists_, 1u);
}

TEST_F(ListedKindsTest, FindsNothingInAFolderThatIsNotThere) {
  EXPECT_EQ(kinds_.At(L"C:\\none\\a"), FileKind::kAbsent);
  EXPECT_EQ(kinds_.At(L"C:\\none\\b"), FileKind::kAbsent);
  EXPECT_EQ(lists_, 1u);
}

TEST_F(ListedKindsTest, AsksForEachPathOfAFolderThatCannotBeListed) {
  closed_ = L"C:\\d";
  EXPECT_EQ(kinds_.At(L"C:\\d\\File.txt"), FileKind::kFile);
  EXPECT_EQ(kinds_.At(L"C:\\d\\sub"), FileKind::kFolder);
  EXPECT_EQ(kinds_.At(L"C:\\d\\none"), FileKind::kAbsent);
}

}  // namespace
}  // namespace carrovan
