#include "platform/sandbox/sandbox_facts.h"

#include <gtest/gtest.h>

#include "tests/support/temporary_folder.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr wchar_t kFile[] = L"C:\\config.ini";

class SandboxProfileFileTest : public testing::Test {
 protected:
  void Put(const std::string& bytes) { PutHostFile(folder_.Path() / "C" / "config.ini", bytes); }
  std::optional<std::string> Bytes() const {
    return HostFileBytes(folder_.Path() / "C" / "config.ini");
  }

  TemporaryFolder folder_;
  DrivePathMapper paths_{folder_.Path()};
  SandboxProfileFile profiles_{paths_};
};

TEST_F(SandboxProfileFileTest, WritesUtf8) {
  Put("");
  EXPECT_TRUE(profiles_.WriteValue(L"S", L"k", FromUtf8("\xE4\xB8\xAD\xF0\x9F\x98\x80"), kFile));
  EXPECT_EQ(Bytes(), "[S]\r\nk=\xE4\xB8\xAD\xF0\x9F\x98\x80\r\n");
  EXPECT_EQ(profiles_.ReadValue(L"S", L"k", kFile), FromUtf8("\xE4\xB8\xAD\xF0\x9F\x98\x80"));
}

TEST_F(SandboxProfileFileTest, KeepsBytesThatAreNotText) {
  Put("[S]\r\nbad=\xFF\x81\r\nk=1\r\n");
  EXPECT_TRUE(profiles_.WriteValue(L"S", L"k", L"2", kFile));
  EXPECT_EQ(Bytes(), "[S]\r\nbad=\xFF\x81\r\nk=2\r\n");
  EXPECT_EQ(profiles_.ReadValue(L"S", L"bad", kFile), L"\xFFFD\xFFFD");
}

TEST_F(SandboxProfileFileTest, KeepsAUtf8MarkInFront) {
  Put("\xEF\xBB\xBF[S]\r\nk=1\r\n");
  EXPECT_EQ(profiles_.ReadValue(L"S", L"k", kFile), L"1");
  EXPECT_TRUE(profiles_.WriteValue(L"S", L"k", L"2", kFile));
  EXPECT_EQ(Bytes(), "\xEF\xBB\xBF[S]\r\nk=2\r\n");
}

TEST_F(SandboxProfileFileTest, LeavesAFileThatHoldsTheValueUntouched) {
  Put("[S]\n k = v \n\n");
  EXPECT_TRUE(profiles_.WriteValue(L"S", L"k", L"v", kFile));
  EXPECT_EQ(Bytes(), "[S]\n k = v \n\n");
}

TEST_F(SandboxProfileFileTest, FailsWhereNothingCanBeWritten) {
  EXPECT_FALSE(profiles_.WriteValue(L"S", L"k", L"v", L"C:\\missing\\config.ini"));
  EXPECT_FALSE(profiles_.WriteValue(L"S", L"k", L"v", L"C:\\a?b.ini"));
  EXPECT_FALSE(profiles_.WriteValue(L"S", L"k", L"v", L""));
  Put("[S]\r\nk=1\r\n");
  EXPECT_FALSE(profiles_.WriteValue(L"S", L"k", L"v", L"C:\\"));
  folder_.TakePermission(folder_.Path() / "C" / "config.ini", std::filesystem::perms::owner_write);
  EXPECT_FALSE(profiles_.WriteValue(L"S", L"k", L"v", kFile));
  EXPECT_EQ(Bytes(), "[S]\r\nk=1\r\n");
}

}  // namespace
}  // namespace carrovan
