#include "preview/overlay_files.h"

#include <gtest/gtest.h>

#include "tests/support/memory_machine.h"

namespace carrovan {
namespace {

const std::wstring kFile = L"C:\\d\\a.txt";

class OverlayFilesTest : public testing::Test {
 protected:
  OverlayFilesTest() {
    machine_.files.PutFolder(L"C:\\Users\\u\\AppData\\Local\\Temp");
    machine_.files.Put(kFile, "old");
    std::wstring reason;
    overlay_ = OverlayFiles::Open(machine_.Ports(), reason);
  }

  std::string Content() const {
    std::string bytes;
    EXPECT_EQ(overlay_->ReadBytes(kFile, bytes), kSystemOk);
    return bytes;
  }

  MemoryMachine machine_;
  std::unique_ptr<OverlayFiles> overlay_;
};

TEST_F(OverlayFilesTest, ReplacementIsSeenWhenItIsCompleteAndNeverOnTheMachine) {
  ASSERT_TRUE(overlay_);
  std::unique_ptr<FileReplacement> file;
  ASSERT_EQ(overlay_->BeginReplacement(kFile, 6, file), kSystemOk);
  EXPECT_EQ(file->Append("new "), kSystemOk);
  EXPECT_EQ(file->Append("text"), kSystemOk);
  EXPECT_EQ(Content(), "old");
  EXPECT_EQ(file->Complete(), kSystemOk);
  EXPECT_EQ(Content(), "new text");
  EXPECT_EQ(machine_.files.Bytes(kFile), "old");
}

TEST_F(OverlayFilesTest, ReplacementThatIsGivenUpLeavesTheFile) {
  ASSERT_TRUE(overlay_);
  std::unique_ptr<FileReplacement> file;
  ASSERT_EQ(overlay_->BeginReplacement(kFile, 6, file), kSystemOk);
  EXPECT_EQ(file->Append("new"), kSystemOk);
  file.reset();
  EXPECT_EQ(Content(), "old");
}

TEST_F(OverlayFilesTest, ReplacementIsRefusedAsWritingIs) {
  ASSERT_TRUE(overlay_);
  machine_.files.MakeReadOnly(kFile);
  std::unique_ptr<FileReplacement> file;
  EXPECT_EQ(overlay_->BeginReplacement(kFile, 1, file), kAccessDenied);
  EXPECT_EQ(overlay_->BeginReplacement(L"C:\\none\\a.txt", 1, file), kPathNotFound);
  EXPECT_EQ(overlay_->BeginReplacement(L"C:\\d\\a?b", 1, file), kInvalidName);
  EXPECT_EQ(file, nullptr);
}

}  // namespace
}  // namespace carrovan
