#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>

#include "platform/windows/windows_command_interpreter.h"
#include "platform/windows/windows_facts.h"
#include "platform/windows/windows_file_system.h"
#include "platform/windows/windows_registry.h"
#include "registry_text/registry_key.h"
#include "tests/support/test_machine.h"
#include "text/text.h"

namespace carrovan {
namespace {

// Sets an environment variable of this process as long as it lives.
class EnvironmentVariable {
 public:
  EnvironmentVariable(std::wstring name, const std::wstring& value) : name_(std::move(name)) {
    if (const wchar_t* old = _wgetenv(name_.c_str())) old_ = old;
    _wputenv_s(name_.c_str(), value.c_str());
  }
  EnvironmentVariable(const EnvironmentVariable&) = delete;
  EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;
  ~EnvironmentVariable() { _wputenv_s(name_.c_str(), old_.c_str()); }

 private:
  std::wstring name_;
  std::wstring old_;
};

TEST(WindowsKnownFolders, HasNoTemporaryPathThatIsTooLong) {
  const EnvironmentVariable tmp(L"TMP", L"C:\\" + std::wstring(280, L'a'));
  const EnvironmentVariable temp(L"TEMP", L"C:\\" + std::wstring(280, L'a'));
  EXPECT_EQ(WindowsKnownFolders().TempPath(), std::nullopt);
}

TEST(WindowsKnownFolders, EndsTheTemporaryPathInABackslash) {
  const EnvironmentVariable tmp(L"TMP", L"C:\\windows");
  EXPECT_EQ(WindowsKnownFolders().TempPath(), L"C:\\windows\\");
}

TEST(WindowsCommandInterpreter, TakesQuotedPathsWithBlanks) {
  const auto machine = NewTestMachine();
  const std::wstring key =
      L"SOFTWARE\\Vantric\\" + machine->product.productName + L" 28.0\\Open Option";
  machine->PutValue(RegistryHive::kCurrentUser, key, MakeStringValue(L"a", L"b"));
  machine->MakeFolder(machine->ScratchFolder() + L"with blank");
  const std::wstring file = machine->ScratchFolder() + L"with blank\\Open Option.reg";
  const auto command = WindowsCommandInterpreter().Start(L"/C reg export \"HKEY_CURRENT_USER\\" +
                                                         key + L"\" \"" + file + L"\" /y");
  ASSERT_NE(command, nullptr);
  command->WaitForEnd();
  const std::string bytes = machine->FileBytes(file).value_or("");
  EXPECT_EQ(bytes.substr(0, 2), "\xFF\xFE");
}

// Works in another folder as long as it lives.
class WorkingFolder {
 public:
  explicit WorkingFolder(const std::wstring& folder) : old_(std::filesystem::current_path()) {
    std::filesystem::current_path(folder);
  }
  WorkingFolder(const WorkingFolder&) = delete;
  WorkingFolder& operator=(const WorkingFolder&) = delete;
  ~WorkingFolder() { std::filesystem::current_path(old_); }

 private:
  std::filesystem::path old_;
};

TEST(WindowsCommandInterpreter, RunsNoToolOfTheFolderOfTheMoment) {
  const auto machine = NewTestMachine();
  const std::wstring key = L"SOFTWARE\\Vantric\\" + machine->product.productName + L" 28.0";
  machine->PutValue(RegistryHive::kCurrentUser, key, MakeStringValue(L"a", L"b"));
  const std::wstring folder = machine->ScratchFolder() + L"downloads";
  for (const wchar_t* tool : {L"\\reg.bat", L"\\reg.cmd"}) {
    machine->PutFile(folder + tool, "@echo planted> planted.txt\r\n");
  }
  const std::wstring file = machine->ScratchFolder() + L"x.reg";
  {
    const WorkingFolder working(folder);
    const auto command = WindowsCommandInterpreter().Start(L"/C reg export \"HKEY_CURRENT_USER\\" +
                                                           key + L"\" \"" + file + L"\" /y");
    ASSERT_NE(command, nullptr);
    EXPECT_TRUE(command->WaitForEnd());
  }
  EXPECT_FALSE(machine->FileBytes(folder + L"\\planted.txt"));
  EXPECT_TRUE(machine->FileBytes(file));
}

TEST(WindowsCommandInterpreter, WaitsForTheEndOfTheCommand) {
  const auto machine = NewTestMachine();
  const std::wstring file = machine->ScratchFolder() + L"done.txt";
  const auto command = WindowsCommandInterpreter().Start(
      L"/C ping -n 2 127.0.0.1 >nul & echo done>\"" + file + L"\"");
  ASSERT_NE(command, nullptr);
  command->WaitForEnd();
  EXPECT_EQ(machine->FileBytes(file), "done\r\n");
}

TEST(WindowsClock, PauseLastsAsLongAsAskedFor) {
  constexpr std::chrono::milliseconds kPause(200);
  constexpr std::chrono::milliseconds kTick(20);  // the system counts in ticks and may lack one
  const auto begun = std::chrono::steady_clock::now();
  WindowsClock().Pause(kPause);
  EXPECT_GE(std::chrono::steady_clock::now() - begun, kPause - kTick);
}

class RegistryWriterTest : public testing::Test {
 protected:
  static constexpr RegistryHive kUser = RegistryHive::kCurrentUser;

  std::unique_ptr<TestMachine> machine_ = NewTestMachine();
  std::wstring key_ = L"SOFTWARE\\Vantric\\" + machine_->product.productName;
};

TEST_F(RegistryWriterTest, KeepsValuesOfEveryTypeAndSize) {
  ASSERT_EQ(CreateRegistryKey(kUser, key_), kSystemOk);
  const RegistryValue values[] = {
      {L"", kRegSz, MakeStringValue(L"", L"default").data},
      {L"none", kRegNone, {}},
      {L"half text", kRegSz, {0x41}},
      {L"number", kRegDword, {1, 2, 3, 4}},
      {L"large", kRegBinary, std::vector<std::uint8_t>(70'000, 0xA5)},
      {L"own type", 0x12345, {1}},
      {std::wstring(255, L'n'), kRegQword, {1, 2, 3, 4, 5, 6, 7, 8}},
  };
  for (const RegistryValue& value : values) {
    EXPECT_EQ(SetRegistryValue(kUser, key_, value), kSystemOk) << ToUtf8(value.name);
    EXPECT_EQ(QueryRegistryValue(kUser, key_, value.name), value) << ToUtf8(value.name);
  }
}

TEST_F(RegistryWriterTest, SetsNoValueOfAMissingKey) {
  EXPECT_EQ(SetRegistryValue(kUser, key_, MakeDwordValue(L"a", 1)), kFileNotFound);
  EXPECT_EQ(QueryRegistryValue(kUser, key_, L"a"), std::nullopt);
}

TEST_F(RegistryWriterTest, HasNothingForAMissingValue) {
  ASSERT_EQ(CreateRegistryKey(kUser, key_), kSystemOk);
  EXPECT_EQ(QueryRegistryValue(kUser, key_, L"a"), std::nullopt);
}

TEST_F(RegistryWriterTest, DeletesAKeyWithItsSubkeys) {
  ASSERT_EQ(CreateRegistryKey(kUser, key_ + L"\\A\\B"), kSystemOk);
  EXPECT_EQ(DeleteRegistryTree(kUser, key_), kSystemOk);
  EXPECT_FALSE(machine_->Ports().registry->CanOpenKey(kUser, key_));
  EXPECT_EQ(DeleteRegistryTree(kUser, key_), kFileNotFound);
}

TEST_F(RegistryWriterTest, RefusesToDeleteAWholeHive) {
  EXPECT_EQ(DeleteRegistryTree(kUser, L""), kInvalidName);
}

TEST(WindowsFileSystem, HeldFileIsNobodyElsesUntilItsHolderIsGone) {
  const auto machine = NewTestMachine();
  const std::wstring mark = machine->ScratchFolder() + L"mark";
  WindowsFileSystem other;
  {
    WindowsFileSystem holder;
    ASSERT_EQ(holder.HoldFile(mark, FileHold::kMake), kSystemOk);
    EXPECT_EQ(other.HoldFile(mark, FileHold::kTake), kSharingViolation);
  }
  EXPECT_EQ(other.HoldFile(mark, FileHold::kTake), kSystemOk);
  EXPECT_EQ(other.RemoveFile(mark), kSystemOk);
}

}  // namespace
}  // namespace carrovan
