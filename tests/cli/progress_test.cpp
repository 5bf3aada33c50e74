#include "cli/progress.h"

#include <gtest/gtest.h>

#include "tests/cli/recording_console.h"
#include "tests/support/test_machine.h"

namespace carrovan {
namespace {

class Progress : public testing::Test {
 protected:
  ArchiveResult WriteArchive() {
    ProgressArchives archives(*machine_->Ports().archives, console_);
    machine_->PutFile(machine_->ScratchFolder() + L"a.txt", "a");
    const auto writer =
        archives.Create(machine_->ScratchFolder() + L"x.ucex", ArchivePurpose::kKeep);
    if (!writer) return ArchiveResult::kTargetNotWritable;
    EXPECT_EQ(writer->Add(L"a.txt", machine_->ScratchFolder() + L"a.txt"), ArchiveResult::kDone);
    return writer->Close();
  }

  std::unique_ptr<TestMachine> machine_ = NewTestMachine();
  RecordingConsole console_;
};

TEST_F(Progress, CountsOnATerminalAndClearsTheLine) {
  console_.terminal = true;
  EXPECT_EQ(WriteArchive(), ArchiveResult::kDone);
  EXPECT_NE(console_.err.find(L"1 files"), std::wstring::npos);
  EXPECT_EQ(console_.err.back(), L'\r');
  EXPECT_EQ(console_.out, L"");
}

TEST_F(Progress, IsSilentAnywhereElse) {
  EXPECT_EQ(WriteArchive(), ArchiveResult::kDone);
  EXPECT_EQ(console_.err, L"");
  EXPECT_TRUE(machine_->Ports().files->Exists(machine_->ScratchFolder() + L"x.ucex"));
}

}  // namespace
}  // namespace carrovan
