#include <gtest/gtest.h>

#include "cli/command_line.h"
#include "platform/system_code.h"
#include "tests/cli/recording_console.h"
#include "tests/support/temporary_folder.h"

namespace carrovan {
namespace {

using Arguments = std::vector<std::wstring>;

constexpr char kHive[] =
    "Windows Registry Editor Version 5.00\r\n\r\n"
    "[HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\VANTRIC 28.0]\r\n\"Depth\"=dword:00000001\r\n";

// A machine in a folder, which serves on every system.
class RewriteVerbs : public testing::Test {
 protected:
  RewriteVerbs() {
    Put("product.ini", "[Product]\r\nUserName=newuser\r\n");
    Put("registry/HKEY_CURRENT_USER.reg", kHive);
  }

  void Put(const char* name, const std::string& bytes) {
    PutHostFile(folder_.Path() / name, bytes);
  }
  std::string Bytes(const char* name) const {
    return HostFileBytes(folder_.Path() / name).value_or("<missing>");
  }

  ExitStatus Run(Arguments arguments) {
    console_ = {};
    arguments.insert(arguments.begin(), {L"--root", folder_.Text()});
    return RunCommandLine(arguments, console_);
  }

  ExitStatus Rewrite(const wchar_t* folder) {
    return Run({L"rewrite", folder, L"--product", L"VANTRIC", L"--package-release", L"2025",
                L"--package-internal", L"27.0", L"--target-release", L"2026", L"--target-internal",
                L"28.0", L"--drafting-folder", L"C:\\Users\\newuser\\none"});
  }

  TemporaryFolder folder_;
  RecordingConsole console_;
};

TEST_F(RewriteVerbs, RewritePrintsItsReports) {
  Put("C/p/V 27.0/a.reg", "\"a\"=\"C:/Users/old/x\"\r\n\"b\"=\"VANTRIC 27.0\"\r\n");
  EXPECT_EQ(Rewrite(L"C:\\p"), ExitStatus::kDone);
  EXPECT_EQ(Bytes("C/p/V 28.0/a.reg"), "\"b\"=\"VANTRIC 28.0\"\r\n");
  EXPECT_EQ(console_.out,
            L"Successfully replaced 1 user paths\n"
            L"Successfully removed 1 registry entries with invalid absolute paths\n");
  EXPECT_EQ(console_.err, L"");
}

TEST_F(RewriteVerbs, RewriteNamesWhatItLeftAsItIs) {
  Put("C/p/a.xml", std::string("2\0"
                               "0\0",
                               4));
  Put("C/p/b.xml", "2025\r\n");
  EXPECT_EQ(Rewrite(L"C:\\p"), ExitStatus::kPartly);
  EXPECT_EQ(console_.err.substr(0, 25), L"Left as it is: C:\\p\\a.xml");
  EXPECT_EQ(Bytes("C/p/b.xml"), "2026\r\n");
}

TEST_F(RewriteVerbs, RewriteRefusesWhatIsNoFolder) {
  Put("C/file", "");
  for (const wchar_t* folder : {L"C:\\none", L"C:\\file"}) {
    EXPECT_EQ(Rewrite(folder), ExitStatus::kFailed);
    EXPECT_EQ(console_.err, std::wstring(folder) + L" is not a folder\n");
    EXPECT_EQ(console_.out, L"");
  }
}

TEST_F(RewriteVerbs, RetargetReplacesTheHighestVersion) {
  Put("C/a.xml", "VANTRIC2023 VANTRIC2024.1\r\n");
  EXPECT_EQ(Run({L"retarget", L"C:\\a.xml", L"VANTRIC", L"27.0"}), ExitStatus::kDone);
  EXPECT_EQ(Bytes("C/a.xml"), "VANTRIC2023 VANTRIC27.0\r\n");
  EXPECT_EQ(console_.out + console_.err, L"");
}

TEST_F(RewriteVerbs, RetargetNamesAMissingFile) {
  Put("C/other.xml", "");
  EXPECT_EQ(Run({L"retarget", L"C:\\none.xml", L"VANTRIC", L"27.0"}), ExitStatus::kFailed);
  EXPECT_EQ(console_.err, L"C:\\none.xml: " + DescribeSystemCode(kFileNotFound) + L"\n");
}

TEST_F(RewriteVerbs, MigrateOptionsSetsValues) {
  Put("C/o.xml", "<r><Depth value='7'/><None value='1'/></r>");
  EXPECT_EQ(Run({L"migrate-options", L"C:\\o.xml", L"Vantric", L"VANTRIC 28.0"}),
            ExitStatus::kDone);
  EXPECT_EQ(console_.out, L"1 values set\n");
  EXPECT_EQ(console_.err, L"");
}

TEST_F(RewriteVerbs, MigrateOptionsSaysWhyItFailedOnOneLine) {
  Put("C/o.xml", "<r/>");
  Put("C/broken.xml", "<r>");
  EXPECT_EQ(Run({L"migrate-options", L"C:\\o.xml", L"Vantric", L"VANTRIC 29.0"}),
            ExitStatus::kFailed);
  EXPECT_EQ(console_.err,
            L"Failed to open registry key SOFTWARE\\Vantric\\VANTRIC 29.0! Error code: 2\n");
  for (const wchar_t* xml : {L"C:\\broken.xml", L"C:\\none.xml"}) {
    EXPECT_EQ(Run({L"migrate-options", xml, L"Vantric", L"VANTRIC 28.0"}), ExitStatus::kFailed);
    EXPECT_TRUE(console_.err.starts_with(L"XML loading failed: "));
    EXPECT_EQ(console_.err.find(L'\n'), console_.err.size() - 1);
    EXPECT_EQ(console_.out, L"");
  }
}

}  // namespace
}  // namespace carrovan
