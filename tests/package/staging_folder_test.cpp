#include "package/staging_folder.h"

#include <gtest/gtest.h>

#include "tests/support/fakes.h"
#include "tests/support/test_machine.h"

namespace carrovan {
namespace {

class StagingFolderTest : public testing::Test {
 protected:
  StagingFolderTest() { folders_.temp = machine_->ScratchFolder(); }

  Machine Ports() {
    const Machine ports = machine_->Ports();
    return With<&Machine::guids>(With<&Machine::folders>(ports, folders_), guids_);
  }

  std::wstring Expected() const {
    return machine_->ScratchFolder() + L"00112233-4455-6677-8899-AABBCCDDEEFF\\";
  }

  std::unique_ptr<TestMachine> machine_ = NewTestMachine();
  FixedFolders folders_;
  FixedGuids guids_;
  ProductContext context_;
};

TEST_F(StagingFolderTest, IsNamedByAGuidWithoutBraces) {
  ASSERT_TRUE(CreateStagingFolder(context_, Ports()));
  EXPECT_EQ(context_.stagingFolder, Expected());
  EXPECT_TRUE(Ports().files->IsFolder(Expected()));
}

TEST_F(StagingFolderTest, ExistingFolderOfTheSameNameIsReused) {
  machine_->PutFile(Expected() + L"kept.txt", "kept");
  ASSERT_TRUE(CreateStagingFolder(context_, Ports()));
  EXPECT_EQ(context_.stagingFolder, Expected());
  EXPECT_EQ(machine_->FileBytes(Expected() + L"kept.txt"), "kept");
}

TEST_F(StagingFolderTest, FailureLeavesTheContextUnchanged) {
  context_.stagingFolder = L"C:\\before\\";
  folders_.temp.reset();
  EXPECT_FALSE(CreateStagingFolder(context_, Ports()));
  folders_.temp = machine_->ScratchFolder() + L"missing\\";
  EXPECT_FALSE(CreateStagingFolder(context_, Ports()));
  folders_.temp = machine_->ScratchFolder();
  guids_.guid.reset();
  EXPECT_FALSE(CreateStagingFolder(context_, Ports()));
  EXPECT_EQ(context_.stagingFolder, L"C:\\before\\");
}

TEST_F(StagingFolderTest, DeletingTakesTheContentAlong) {
  ASSERT_TRUE(CreateStagingFolder(context_, Ports()));
  machine_->PutFile(context_.stagingFolder + L"Local\\深\\x.txt", "x");
  DeleteStagingFolder(context_, Ports());
  EXPECT_FALSE(Ports().files->Exists(Expected()));
  EXPECT_TRUE(Ports().files->IsFolder(machine_->ScratchFolder()));
}

TEST_F(StagingFolderTest, DeletingWithoutAFolderTouchesNothing) {
  DeleteStagingFolder(context_, Ports());
  EXPECT_TRUE(Ports().files->IsFolder(machine_->ScratchFolder()));
}

TEST_F(StagingFolderTest, RenewingReplacesTheFolderAndTheDescriptionsPath) {
  ASSERT_TRUE(CreateStagingFolder(context_, Ports()));
  const std::wstring old = context_.stagingFolder;
  machine_->PutFile(old + L"General.reg", "old");
  guids_.guid = L"{FFEEDDCC-4455-6677-8899-AABBCCDDEEFF}";
  ASSERT_TRUE(RenewStagingFolder(context_, Ports()));
  EXPECT_FALSE(Ports().files->Exists(old));
  EXPECT_EQ(context_.packageDescriptionPath,
            machine_->ScratchFolder() + L"FFEEDDCC-4455-6677-8899-AABBCCDDEEFF\\config.ini");
}

}  // namespace
}  // namespace carrovan
