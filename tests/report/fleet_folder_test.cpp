#include "report/fleet_folder.h"

#include <gtest/gtest.h>

#include "tests/support/memory_files.h"

namespace carrovan {
namespace {

const std::wstring kRoot = L"C:\\results";

class FleetFolderTest : public testing::Test {
 protected:
  FleetFolderTest() { files_.PutFolder(kRoot); }

  void Put(const std::wstring& path, const std::string& bytes) {
    files_.Put(kRoot + L"\\" + path, bytes);
  }

  MemoryFiles files_;
};

TEST_F(FleetFolderTest, MissingFolderIsAProblemWithItsName) {
  const std::wstring missing = L"C:\\missing";
  EXPECT_TRUE(FleetFolder(files_, missing).Problem().starts_with(missing + L": "));
  EXPECT_EQ(FleetFolder(files_, kRoot).Problem(), L"");
}

TEST_F(FleetFolderTest, AnswersComeByNumberAndNothingElseIsOne) {
  for (const wchar_t* name : {L"10", L"2", L"1", L"01", L"0", L"x", L"-1", L"1234567"}) {
    Put(std::wstring(L"ws01\\answers\\") + name + L"\\status.txt", "0");
  }
  const FleetHostFolder host = FleetFolder(files_, kRoot).ReadHost(L"ws01");
  ASSERT_EQ(host.answers.size(), 3u);
  EXPECT_EQ(host.answers[0].number, 1);
  EXPECT_EQ(host.answers[1].number, 2);
  EXPECT_EQ(host.answers[2].number, 10);
}

TEST_F(FleetFolderTest, FilesOfAnAnswerAreReadAsTheyAre) {
  Put(L"ws01\\answers\\1\\output.json", std::string("{\0}", 3));
  Put(L"ws01\\answers\\1\\status.txt", "3\r\n");
  const FleetAnswerFiles answer = FleetFolder(files_, kRoot).ReadAnswer(L"ws01", 1);
  EXPECT_EQ(answer.output.bytes, std::string("{\0}", 3));
  EXPECT_EQ(answer.status.bytes, "3\r\n");
  EXPECT_FALSE(answer.user.isThere);
  EXPECT_EQ(answer.problem, L"");
}

TEST_F(FleetFolderTest, FileBehindTheLimitIsNamedAndNotKept) {
  Put(L"ws01\\failure.txt", std::string(10000, 'x'));
  const FleetFile whole = FleetFolder(files_, kRoot, 10000).ReadHost(L"ws01").failure;
  EXPECT_EQ(whole.bytes.size(), 10000u);
  const FleetFile cut = FleetFolder(files_, kRoot, 9999).ReadHost(L"ws01").failure;
  EXPECT_TRUE(cut.isThere);
  EXPECT_EQ(cut.bytes, "");
  EXPECT_EQ(cut.problem, L"failure.txt is larger than 9999 bytes");
}

TEST_F(FleetFolderTest, FileThatCannotBeReadIsNamed) {
  Put(L"ws01\\failure.txt", "x");
  files_.fault = [](const std::string&, const std::wstring& path) {
    return path.ends_with(L"failure.txt") ? kAccessDenied : kSystemOk;
  };
  const FleetFile file = FleetFolder(files_, kRoot).ReadHost(L"ws01").failure;
  EXPECT_EQ(file.problem, L"failure.txt cannot be read: access denied (error 5)");
}

TEST_F(FleetFolderTest, NameThatTheFolderDoesNotListLeadsNowhere) {
  files_.Put(L"C:\\other\\failure.txt", "x");
  Put(L"ws01\\failure.txt", "x");
  const FleetFolder folder(files_, kRoot);
  for (const wchar_t* name :
       {L"..\\other", L"../other", L"C:\\other", L".", L"..", L"", L"ws01\\.", L"ws01\\"}) {
    EXPECT_FALSE(folder.ReadHost(name).failure.isThere) << testing::PrintToString(name);
  }
  EXPECT_TRUE(folder.ReadHost(L"ws01").failure.isThere);
}

TEST(FleetTextTest, NamesThatLeadElsewhereCannotBeFolders) {
  for (const wchar_t* name : {L"", L".", L"..", L"a/b", L"a\\b", L"a\nb", L"\x7F"}) {
    EXPECT_FALSE(CanBeHostFolder(name)) << testing::PrintToString(name);
  }
  EXPECT_TRUE(CanBeHostFolder(L"ws01.example"));
  EXPECT_TRUE(CanBeHostFolder(L"fe80::1"));
}

TEST(FleetTextTest, LinesAreWithoutEndsMarkAndBlankOnes) {
  std::size_t omitted = 0;
  EXPECT_EQ(FleetLines("\xEF\xBB\xBF one\r\n\r\n\ttwo\nthr\xFF", 9, 9, omitted),
            (std::vector<std::wstring>{L"one", L"two", L"thr\xFFFD"}));
  EXPECT_EQ(omitted, 0u);
  EXPECT_EQ(FleetLines("a\nb\nlonger\nd", 2, 3, omitted), (std::vector<std::wstring>{L"a", L"b"}));
  EXPECT_EQ(omitted, 2u);
  EXPECT_EQ(FleetLines("longer", 2, 3, omitted)[0], L"lon\x2026 (6 characters)");
}

TEST(FleetTextTest, NumberIsDecimalAndNothingElse) {
  EXPECT_EQ(FleetNumber("0"), 0);
  EXPECT_EQ(FleetNumber(" 3\r\n"), 3);
  EXPECT_EQ(FleetNumber("-1073741819"), -1073741819);
  for (const char* text : {"", " ", "x", "0x1", "1 2", "1.0", "99999999999", "+1"}) {
    EXPECT_EQ(FleetNumber(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace carrovan
