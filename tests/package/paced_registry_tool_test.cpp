#include "package/paced_registry_tool.h"

#include <gtest/gtest.h>

#include "tests/support/fakes.h"
#include "tests/support/test_machine.h"

namespace carrovan {
namespace {

using std::chrono::milliseconds;
using Pauses = std::vector<milliseconds>;
using Commands = std::vector<std::wstring>;

class RegistryToolTest : public testing::Test {
 protected:
  RecordingInterpreter interpreter_;
  RecordingClock clock_;
  PacedRegistryTool wizardTool_{interpreter_.tool, clock_, RegistryToolPace::kFixedPause};
  PacedRegistryTool waitingTool_{interpreter_.tool, clock_, RegistryToolPace::kWaitForEnd};
};

TEST_F(RegistryToolTest, ExportCommandQuotesBothPathsAndOverwrites) {
  EXPECT_TRUE(wizardTool_.RegExportKey(
      L"HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\VANTRIC 28.0\\General", L"C:\\T\\General.reg"));
  EXPECT_EQ(interpreter_.started,
            Commands{L"/C reg export "
                     L"\"HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\VANTRIC 28.0\\General\" "
                     L"\"C:\\T\\General.reg\" /y"});
}

TEST_F(RegistryToolTest, ImportCommandQuotesThePath) {
  EXPECT_TRUE(wizardTool_.RegImportFile(L"C:\\T\\Point Snap.reg"));
  EXPECT_EQ(interpreter_.started, Commands{L"/C reg import \"C:\\T\\Point Snap.reg\""});
}

TEST_F(RegistryToolTest, DoubleQuoteInAPathIsNotEscaped) {
  EXPECT_TRUE(wizardTool_.RegImportFile(L"C:\\a\"b.reg"));
  EXPECT_EQ(interpreter_.started, Commands{L"/C reg import \"C:\\a\"b.reg\""});
}

TEST_F(RegistryToolTest, WizardPausesAfterEachExportAndWaitsForNothing) {
  wizardTool_.RegExportKey(L"K", L"1");
  wizardTool_.RegExportKey(L"K", L"2");
  EXPECT_EQ(clock_.pauses, (Pauses{milliseconds(100), milliseconds(100)}));
  EXPECT_EQ(interpreter_.waits, 0);
}

TEST_F(RegistryToolTest, WizardImportHasNoDelayAtAll) {
  EXPECT_TRUE(wizardTool_.RegImportFile(L"1"));
  EXPECT_EQ(clock_.pauses, Pauses{});
  EXPECT_EQ(interpreter_.waits, 0);
}

TEST_F(RegistryToolTest, WaitingToolWaitsForEachCommandAndDoesNotPause) {
  EXPECT_TRUE(waitingTool_.RegExportKey(L"K", L"1"));
  EXPECT_TRUE(waitingTool_.RegImportFile(L"1"));
  EXPECT_EQ(interpreter_.waits, 2);
  EXPECT_EQ(clock_.pauses, Pauses{});
}

TEST_F(RegistryToolTest, InterpreterThatCannotStartChangesNothing) {
  interpreter_.canStart = false;
  EXPECT_TRUE(wizardTool_.RegExportKey(L"K", L"1"));
  EXPECT_TRUE(waitingTool_.RegExportKey(L"K", L"1"));
  EXPECT_FALSE(waitingTool_.RegImportFile(L"1"));
  EXPECT_FALSE(wizardTool_.RegImportFile(L"1"));
  EXPECT_EQ(clock_.pauses, Pauses{milliseconds(100)});
}

TEST_F(RegistryToolTest, OnlyTheWaitingToolKnowsThatAnImportFailed) {
  interpreter_.succeeds = false;
  EXPECT_FALSE(waitingTool_.RegImportFile(L"1"));
  EXPECT_TRUE(wizardTool_.RegImportFile(L"1"));
}

TEST(RegistryToolOnAMachine, ImportOfWhatIsNotThereFails) {
  const auto machine = NewTestMachine();
  const Machine ports = machine->Ports();
  PacedRegistryTool tool(*ports.registryTool, *ports.clock, RegistryToolPace::kWaitForEnd);
  EXPECT_FALSE(tool.RegImportFile(machine->ScratchFolder() + L"missing.reg"));
}

TEST(RegistryToolOnAMachine, ImportThatEndedWithoutAWordIsTriedAgain) {
  const auto machine = NewTestMachine();
  const Machine ports = machine->Ports();
  PacedRegistryTool tool(*ports.registryTool, *ports.clock, RegistryToolPace::kWaitForEnd);
  const std::wstring key = L"SOFTWARE\\Vantric\\" + machine->product.productName + L" 28.0";
  const RegistryValue value = MakeStringValue(L"a", L"b");
  machine->PutValue(RegistryHive::kCurrentUser, key, value);
  const std::wstring file = machine->ScratchFolder() + L"a.reg";
  tool.RegExportKey(L"HKEY_CURRENT_USER\\" + key, file);
  machine->PutValue(RegistryHive::kCurrentUser, key, MakeStringValue(value.name, L"changed"));

  HastyRegistryTool tooOften(*ports.registryTool, kRegistryToolAttempts);
  EXPECT_FALSE(
      PacedRegistryTool(tooOften, *ports.clock, RegistryToolPace::kWaitForEnd).RegImportFile(file));
  EXPECT_EQ(tooOften.started, kRegistryToolAttempts);
  HastyRegistryTool hasty(*ports.registryTool, kRegistryToolAttempts - 1);
  EXPECT_TRUE(
      PacedRegistryTool(hasty, *ports.clock, RegistryToolPace::kWaitForEnd).RegImportFile(file));
  EXPECT_EQ(machine->Value(RegistryHive::kCurrentUser, key, value.name), value);
}

TEST(RegistryToolOnAMachine, ExportOfAMissingKeyIsTrueAndLeavesNoFile) {
  const auto machine = NewTestMachine();
  const Machine ports = machine->Ports();
  PacedRegistryTool tool(*ports.registryTool, *ports.clock, RegistryToolPace::kWaitForEnd);
  const std::wstring file = machine->ScratchFolder() + L"missing.reg";
  EXPECT_TRUE(tool.RegExportKey(
      L"HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\" + machine->product.productName + L" 1.0", file));
  EXPECT_FALSE(ports.files->Exists(file));
}

TEST(RegistryToolOnAMachine, KeyTravelsThroughAFileWithBlanksInItsPath) {
  const auto machine = NewTestMachine();
  const Machine ports = machine->Ports();
  const std::wstring key = L"SOFTWARE\\Vantric\\" + machine->product.productName + L" 28.0";
  const RegistryValue value = MakeStringValue(L"a \"b\" \\c", L"C:\\Users\\李雷\\x");
  machine->PutValue(RegistryHive::kCurrentUser, key, value);

  PacedRegistryTool tool(*ports.registryTool, *ports.clock, RegistryToolPace::kWaitForEnd);
  machine->MakeFolder(machine->ScratchFolder() + L"with blanks");
  const std::wstring file = machine->ScratchFolder() + L"with blanks\\Point Snap.reg";
  tool.RegExportKey(L"HKEY_CURRENT_USER\\" + key, file);
  machine->PutValue(RegistryHive::kCurrentUser, key, MakeStringValue(value.name, L"changed"));
  EXPECT_TRUE(tool.RegImportFile(file));
  EXPECT_EQ(machine->Value(RegistryHive::kCurrentUser, key, value.name), value);
}

TEST_F(RegistryToolTest, WaitingToolKnowsHowTheLastExportEnded) {
  waitingTool_.RegExportKey(L"K", L"1");
  EXPECT_FALSE(waitingTool_.LastExportFailed());
  interpreter_.succeeds = false;
  waitingTool_.RegExportKey(L"K", L"1");
  EXPECT_TRUE(waitingTool_.LastExportFailed());
  interpreter_.succeeds = true;
  waitingTool_.RegExportKey(L"K", L"1");
  EXPECT_FALSE(waitingTool_.LastExportFailed());
  interpreter_.canStart = false;
  waitingTool_.RegExportKey(L"K", L"1");
  EXPECT_TRUE(waitingTool_.LastExportFailed());
}

TEST_F(RegistryToolTest, WizardKnowsNothingOfAnExportsEnd) {
  interpreter_.succeeds = false;
  wizardTool_.RegExportKey(L"K", L"1");
  EXPECT_FALSE(wizardTool_.LastExportFailed());
  EXPECT_FALSE(wizardTool_.IsDoneWithFiles());
  EXPECT_TRUE(waitingTool_.IsDoneWithFiles());
}

}  // namespace
}  // namespace carrovan
