#include "package/trusted_interpreter.h"

#include <gtest/gtest.h>

#include "package/registry_tool.h"
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

class TrustedInterpreterTest : public testing::Test {
 protected:
  TrustedInterpreterTest() {
    files_.Put(L"C:\\t\\Options\\good.reg", kGood);
    files_.Put(L"C:\\t\\Options\\bad.reg", kBad);
  }

  RecordingInterpreter real_;
  MemoryFiles files_;
  RecordingClock clock_;
  TrustedInterpreter trusted_{real_, files_, L"Vantric"};
};

TEST_F(TrustedInterpreterTest, StartsTheImportOfAFileWithKeysOfTheCompany) {
  EXPECT_NE(trusted_.Start(L"/C reg import \"C:\\t\\Options\\good.reg\""), nullptr);
  EXPECT_EQ(real_.started, (Commands{L"/C reg import \"C:\\t\\Options\\good.reg\""}));
}

TEST_F(TrustedInterpreterTest, StartsNoImportOfAnyOtherFile) {
  files_.Put(L"C:\\t\\Options\\%X%.reg", kGood);
  files_.Put(L"C:\\t\\Options\\odd.reg", kGood + kGood);
  for (const wchar_t* command :
       {L"/C reg import \"C:\\t\\Options\\bad.reg\"", L"/C reg import \"C:\\t\\Options\\odd.reg\"",
        L"/c REG IMPORT \"C:\\t\\Options\\bad.reg\"",
        L"/C reg import \"C:\\t\\Options\\missing.reg\"", L"/C reg import \"C:\\t\\Options\"",
        L"/C reg import \"C:\\t\\Options\\%X%.reg\"",
        L"/C reg import \"C:\\t\\Options\\good.reg\" & calc \"\"",
        L"/C reg import C:\\t\\Options\\good.reg", L"/C reg import \"", L"/C reg import "}) {
    EXPECT_EQ(trusted_.Start(command), nullptr) << ToUtf8(command);
  }
  EXPECT_EQ(real_.started, Commands());
}

TEST_F(TrustedInterpreterTest, StartsNoImportOfAFileThatFailsHalfWay) {
  files_.fault = [](const std::string&, const std::wstring&) { return kGeneralFailure; };
  EXPECT_EQ(trusted_.Start(L"/C reg import \"C:\\t\\Options\\good.reg\""), nullptr);
  EXPECT_EQ(real_.started, Commands());
}

TEST_F(TrustedInterpreterTest, PassesOtherCommandsOn) {
  const Commands commands = {L"/C reg export \"HKEY_LOCAL_MACHINE\\x\" \"C:\\t\\x.reg\" /y", L"",
                             L"/C reg"};
  for (const std::wstring& command : commands) EXPECT_NE(trusted_.Start(command), nullptr);
  EXPECT_EQ(real_.started, commands);
}

TEST_F(TrustedInterpreterTest, ImportsOfTheRegistryToolFailAtEitherPace) {
  for (const RegistryToolPace pace :
       {RegistryToolPace::kFixedPause, RegistryToolPace::kWaitForEnd}) {
    RegistryTool tool(trusted_, clock_, pace);
    EXPECT_TRUE(tool.RegImportFile(L"C:\\t\\Options\\good.reg"));
    EXPECT_FALSE(tool.RegImportFile(L"C:\\t\\Options\\bad.reg"));
  }
  EXPECT_EQ(real_.started.size(), 2U);
}

TEST(TrustedInterpreterOnAMachine, OnlyAllowedKeysReachTheRegistry) {
  const auto machine = NewTestMachine();
  const Machine ports = machine->Ports();
  const std::wstring key = L"SOFTWARE\\Vantric\\" + machine->product.productName + L" trust";
  machine->PutKey(RegistryHive::kCurrentUser, key);
  const std::wstring file = machine->ScratchFolder() + L"a.reg";
  machine->PutFile(file, RegistryFileBytes("[HKEY_CURRENT_USER\\" + ToUtf8(key) +
                                           "]\r\n\"taken\"=dword:00000001\r\n"));
  const auto isTaken = [&](const wchar_t* company) {
    TrustedInterpreter trusted(ports.interpreter, ports.files, company);
    RegistryTool tool(trusted, ports.clock, RegistryToolPace::kWaitForEnd);
    return tool.RegImportFile(file);
  };
  EXPECT_FALSE(isTaken(L"ORMA"));
  EXPECT_FALSE(machine->Value(RegistryHive::kCurrentUser, key, L"taken"));
  EXPECT_TRUE(isTaken(L"Vantric"));
  EXPECT_TRUE(machine->Value(RegistryHive::kCurrentUser, key, L"taken"));
}

TEST_F(TrustedInterpreterTest, OfAPackageThatIsTrustedNotesWhatIsNotUnderstood) {
  NotingInterpreter noting(real_, files_);
  files_.Put(L"C:\\t\\Options\\odd.reg", kGood + kGood);
  const Commands commands = {L"/C reg import \"C:\\t\\Options\\odd.reg\"",
                             L"/C reg import \"C:\\t\\Options\\bad.reg\"",
                             L"/C reg import \"C:\\t\\Options\\missing.reg\"", L"/C reg"};
  for (const std::wstring& command : commands) EXPECT_NE(noting.Start(command), nullptr);
  EXPECT_EQ(real_.started, commands);
  EXPECT_EQ(
      noting.NotUnderstood(),
      (Commands{L"C:\\t\\Options\\odd.reg changes: line 4 is not understood: neither a key nor "
                L"a value",
                L"C:\\t\\Options\\missing.reg changes: file not found (error 2)"}));
}

}  // namespace
}  // namespace carrovan
