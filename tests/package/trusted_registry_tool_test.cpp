#include "package/trusted_registry_tool.h"

#include <gtest/gtest.h>

#include "package/paced_registry_tool.h"
#include "tests/support/fakes.h"
#include "tests/support/memory_files.h"
#include "tests/support/registry_bytes.h"
#include "tests/support/test_machine.h"
#include "text/text.h"

namespace carrovan {
namespace {

const std::string kGood = RegistryFileBytes("[HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\x]\r\n");
const std::string kBad = RegistryFileBytes("[HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantric]\r\n");

using Commands = std::vector<std::wstring>;

class TrustedRegistryToolTest : public testing::Test {
 protected:
  TrustedRegistryToolTest() {
    files_.Put(L"C:\\t\\Options\\good.reg", kGood);
    files_.Put(L"C:\\t\\Options\\bad.reg", kBad);
  }

  RecordingInterpreter real_;
  MemoryFiles files_;
  RecordingClock clock_;
  TrustedRegistryTool trusted_{real_.tool, files_, L"Vantric"};
};

TEST_F(TrustedRegistryToolTest, StartsTheImportOfAFileWithKeysOfTheCompany) {
  EXPECT_NE(trusted_.ImportFile(L"C:\\t\\Options\\good.reg"), nullptr);
  EXPECT_EQ(real_.started, (Commands{L"/C reg import \"C:\\t\\Options\\good.reg\""}));
}

TEST_F(TrustedRegistryToolTest, StartsNoImportOfAnyOtherFile) {
  files_.Put(L"C:\\t\\Options\\%X%.reg", kGood);
  files_.Put(L"C:\\t\\Options\\odd.reg", kGood + kGood);
  for (const wchar_t* name :
       {L"bad.reg", L"odd.reg", L"missing.reg", L"", L"%X%.reg", L"good.reg\" & calc \""}) {
    EXPECT_EQ(trusted_.ImportFile(L"C:\\t\\Options\\" + std::wstring(name)), nullptr)
        << ToUtf8(name);
  }
  EXPECT_EQ(real_.started, Commands());
}

TEST_F(TrustedRegistryToolTest, StartsNoImportOfAFileThatFailsHalfWay) {
  files_.fault = [](const std::string&, const std::wstring&) { return kGeneralFailure; };
  EXPECT_EQ(trusted_.ImportFile(L"C:\\t\\Options\\good.reg"), nullptr);
  EXPECT_EQ(real_.started, Commands());
}

TEST_F(TrustedRegistryToolTest, PassesExportsOn) {
  EXPECT_NE(trusted_.ExportKey(L"HKEY_LOCAL_MACHINE\\x", L"C:\\t\\x.reg"), nullptr);
  EXPECT_EQ(real_.started,
            Commands{L"/C reg export \"HKEY_LOCAL_MACHINE\\x\" \"C:\\t\\x.reg\" /y"});
}

TEST_F(TrustedRegistryToolTest, ImportsOfTheRegistryToolFailAtEitherPace) {
  for (const RegistryToolPace pace :
       {RegistryToolPace::kFixedPause, RegistryToolPace::kWaitForEnd}) {
    PacedRegistryTool tool(trusted_, clock_, pace);
    EXPECT_TRUE(tool.RegImportFile(L"C:\\t\\Options\\good.reg"));
    EXPECT_FALSE(tool.RegImportFile(L"C:\\t\\Options\\bad.reg"));
  }
  EXPECT_EQ(real_.started.size(), 2U);
}

TEST(TrustedRegistryToolOnAMachine, OnlyAllowedKeysReachTheRegistry) {
  const auto machine = NewTestMachine();
  const Machine ports = machine->Ports();
  const std::wstring key = L"SOFTWARE\\Vantric\\" + machine->product.productName + L" trust";
  machine->PutKey(RegistryHive::kCurrentUser, key);
  const std::wstring file = machine->ScratchFolder() + L"a.reg";
  machine->PutFile(file, RegistryFileBytes("[HKEY_CURRENT_USER\\" + ToUtf8(key) +
                                           "]\r\n\"taken\"=dword:00000001\r\n"));
  const auto isTaken = [&](const wchar_t* company) {
    TrustedRegistryTool trusted(*ports.registryTool, *ports.files, company);
    PacedRegistryTool tool(trusted, *ports.clock, RegistryToolPace::kWaitForEnd);
    return tool.RegImportFile(file);
  };
  EXPECT_FALSE(isTaken(L"ORMA"));
  EXPECT_FALSE(machine->Value(RegistryHive::kCurrentUser, key, L"taken"));
  EXPECT_TRUE(isTaken(L"Vantric"));
  EXPECT_TRUE(machine->Value(RegistryHive::kCurrentUser, key, L"taken"));
}

TEST_F(TrustedRegistryToolTest, OfAPackageThatIsTrustedNotesWhatIsNotUnderstood) {
  NotingRegistryTool noting(real_.tool, files_);
  files_.Put(L"C:\\t\\Options\\odd.reg", kGood + kGood);
  for (const wchar_t* name : {L"odd.reg", L"bad.reg", L"missing.reg"}) {
    EXPECT_NE(noting.ImportFile(L"C:\\t\\Options\\" + std::wstring(name)), nullptr);
  }
  EXPECT_EQ(real_.started.size(), 3U);
  EXPECT_EQ(
      noting.NotUnderstood(),
      (Commands{L"C:\\t\\Options\\odd.reg changes: line 4 is not understood: neither a key nor "
                L"a value",
                L"C:\\t\\Options\\missing.reg changes: file not found (error 2)"}));
}

}  // namespace
}  // namespace carrovan
