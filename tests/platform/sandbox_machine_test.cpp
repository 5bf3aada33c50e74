#include "platform/sandbox/sandbox_machine.h"

#include <gtest/gtest.h>

#include "tests/support/temporary_folder.h"
#include "text/text.h"

namespace carrovan {
namespace {

namespace fs = std::filesystem;

class SandboxMachineTest : public testing::Test {
 protected:
  void PutIni(const std::string& text) { PutHostFile(folder_.Path() / "product.ini", text); }

  std::wstring ReasonAgainst() const {
    const MachineOrReason opened = SandboxMachine::Open(folder_.Text());
    EXPECT_EQ(opened.object, nullptr);
    return opened.reason;
  }

  TemporaryFolder folder_;
};

TEST_F(SandboxMachineTest, KnowsTheProductAndTheUser) {
  PutIni(
      "[Product]\r\nCompanyShortName=ORMA\r\nProductName=ORMA CAD\r\nProductVersion=28.0\r\n"
      "HumanReadableVersion=2026\r\nStartupFolder=C:\\Program Files\\P\\Bin\r\n"
      "UserName=\xE6\x9D\x8E Li\r\n");
  const MachineOrReason opened = SandboxMachine::Open(folder_.Text());
  ASSERT_NE(opened.object, nullptr) << ToUtf8(opened.reason);
  EXPECT_EQ(opened.reason, L"");
  const Machine machine = opened.object->Ports();
  EXPECT_EQ(machine.product->CompanyShortName(), L"ORMA");
  EXPECT_EQ(machine.product->ProductName(), L"ORMA CAD");
  EXPECT_EQ(machine.product->ProductVersion(), L"28.0");
  EXPECT_EQ(machine.product->HumanReadableVersion(), L"2026");
  EXPECT_EQ(machine.product->StartupFolder(), L"C:\\Program Files\\P\\Bin");
  EXPECT_EQ(machine.folders->LocalAppData(), L"C:\\Users\\\x674E Li\\AppData\\Local");
  EXPECT_EQ(machine.folders->RoamingAppData(), L"C:\\Users\\\x674E Li\\AppData\\Roaming");
  EXPECT_EQ(machine.folders->TempPath(), L"C:\\Users\\\x674E Li\\AppData\\Local\\Temp\\");
  EXPECT_TRUE(machine.files->IsFolder(L"C:\\Users\\\x674E Li\\AppData\\Local\\Temp"));
}

TEST_F(SandboxMachineTest, LeavesAFactThatIsNotGivenEmpty) {
  PutIni("[Product]\nUserName=u\n");
  const MachineOrReason opened = SandboxMachine::Open(folder_.Text());
  ASSERT_NE(opened.object, nullptr);
  EXPECT_EQ(opened.object->Ports().product->ProductName(), L"");
}

TEST_F(SandboxMachineTest, UsesTheFoldersThatAreThere) {
  PutIni("[Product]\nUserName=u\n");
  fs::create_directories(folder_.Path() / "C" / "USERS" / "U" / "appdata");
  ASSERT_NE(SandboxMachine::Open(folder_.Text()).object, nullptr);
  EXPECT_TRUE(fs::is_directory(folder_.Path() / "C" / "USERS" / "U" / "appdata" / "Local"));
}

TEST_F(SandboxMachineTest, SaysWhatIsMissing) {
  EXPECT_EQ(SandboxMachine::Open(folder_.Text() + L"none").reason,
            L"there is no sandbox folder " + folder_.Text() + L"none");
  EXPECT_EQ(ReasonAgainst(), folder_.Text() + L": product.ini is missing");
  fs::create_directory(folder_.Path() / "product.ini");
  EXPECT_EQ(ReasonAgainst(), folder_.Text() + L": product.ini cannot be read");
}

TEST_F(SandboxMachineTest, RefusesAUserWhoCannotHaveAFolder) {
  PutIni("[Product]\r\nProductName=P\r\n");
  EXPECT_EQ(ReasonAgainst(), folder_.Text() + L": product.ini names no user (UserName)");
  for (const char* name :
       {"..", ".", "a\\b", "a/b", "C:", "a?", "a*b", "a.", "NUL", "a\"b\"c", "..\\..\\x"}) {
    PutIni("[Product]\r\nUserName=" + std::string(name) + "\r\n");
    EXPECT_EQ(
        ReasonAgainst(),
        folder_.Text() + L": product.ini names a user who cannot have a folder: " + FromUtf8(name));
  }
  PutIni("[Product]\r\nUserName=" + std::string(250, 'u') + "\r\n");
  EXPECT_EQ(ReasonAgainst(),
            folder_.Text() + L": product.ini names a user whose temporary path is too long");
}

TEST_F(SandboxMachineTest, SaysWhichHiveCannotBeRead) {
  PutIni("[Product]\nUserName=u\n");
  PutHostFile(folder_.Path() / "registry" / "HKEY_LOCAL_MACHINE.reg", "junk");
  EXPECT_EQ(ReasonAgainst(),
            folder_.Text() + L": registry HKEY_LOCAL_MACHINE.reg: not a registry file");
}

TEST_F(SandboxMachineTest, SaysWhenTheTemporaryFolderCannotBeMade) {
  PutIni("[Product]\nUserName=u\n");
  PutHostFile(folder_.Path() / "C" / "Users", "a file");
  EXPECT_EQ(ReasonAgainst(), folder_.Text() + L": C:\\Users\\u\\AppData\\Local\\Temp\\ " +
                                 L"already exists (error 183)");
}

TEST_F(SandboxMachineTest, MakesThePausesItIsAskedFor) {
  PutIni("[Product]\nUserName=u\n");
  const MachineOrReason opened = SandboxMachine::Open(folder_.Text());
  ASSERT_NE(opened.object, nullptr);
  const auto start = std::chrono::steady_clock::now();
  opened.object->Ports().clock->Pause(std::chrono::milliseconds(20));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(20));
}

// Whether the host takes names in any case or not.
TEST_F(SandboxMachineTest, MovesAFileToAnotherSpellingOfItsName) {
  PutHostFile(folder_.Path() / "C" / "sub" / "name.txt", "x");
  const FilesOrReason opened = OpenSandboxFiles(folder_.Text());
  ASSERT_NE(opened.object, nullptr);
  FileSystem& files = opened.object->Files();
  EXPECT_EQ(files.MoveTo(L"C:\\sub\\name.txt", L"C:\\sub\\NAME.txt"), kSystemOk);
  EXPECT_EQ(files.MoveTo(L"C:\\sub", L"C:\\Sub"), kSystemOk);
  EXPECT_EQ(ListFolder(files, L"C:\\SUB").size(), 1u);
  std::string bytes;
  EXPECT_EQ(files.ReadBytes(L"C:\\sub\\name.txt", bytes), kSystemOk);
  EXPECT_EQ(bytes, "x");
}

TEST_F(SandboxMachineTest, LendsItsFilesWithoutAProduct) {
  PutHostFile(folder_.Path() / "C" / "a.txt", "x");
  const FilesOrReason opened = OpenSandboxFiles(folder_.Text());
  ASSERT_NE(opened.object, nullptr);
  EXPECT_TRUE(opened.object->Files().Exists(L"c:\\A.TXT"));
  EXPECT_EQ(opened.object->Archives().Open(L"C:\\a.txt"), nullptr);
  EXPECT_EQ(opened.object->Examine(L"C:\\a.txt"), nullptr);
  EXPECT_EQ(opened.object->Archives().Create(L"C:\\a?b.zip", ArchivePurpose::kKeep), nullptr);
  EXPECT_EQ(OpenSandboxFiles(folder_.Text() + L"none").reason,
            L"there is no sandbox folder " + folder_.Text() + L"none");
}

}  // namespace
}  // namespace carrovan
