#include "package/staging_folder.h"

#include <gtest/gtest.h>

#include "package/package_opening.h"
#include "preview/overlay_machine.h"
#include "tests/support/fakes.h"
#include "tests/support/memory_machine.h"
#include "tests/support/test_machine.h"

namespace carrovan {
namespace {

const std::wstring kTemp = L"C:\\Users\\u\\AppData\\Local\\Temp\\";
const std::wstring kFolder = kTemp + L"00112233-4455-6677-8899-aabbCCDDEEFF";
const std::wstring kMark = kFolder + L"\\" + kRunFolderMark;

class SweepTest : public testing::Test {
 protected:
  SweepTest() { machine_.files.PutFolder(kTemp.substr(0, kTemp.size() - 1)); }

  void Sweep() { SweepRunFolders(machine_.Ports()); }

  MemoryMachine machine_;
};

TEST_F(SweepTest, FolderOfAProcessThatIsGoneIsRemoved) {
  machine_.files.Put(kMark, "");
  machine_.files.Put(kFolder + L"\\Local\\深\\x.txt", "x");
  machine_.files.Put(kTemp + L"other.txt", "somebody's");
  Sweep();
  EXPECT_FALSE(machine_.files.Has(kFolder));
  EXPECT_TRUE(machine_.files.Has(kTemp + L"other.txt"));
}

TEST_F(SweepTest, FolderOfALivingProcessStays) {
  machine_.files.Put(kFolder + L"\\config.ini", "x");
  ASSERT_EQ(machine_.files.HoldFile(kMark, FileHold::kMake), kSystemOk);
  Sweep();
  EXPECT_EQ(machine_.files.Bytes(kFolder + L"\\config.ini"), "x");
}

TEST_F(SweepTest, FolderWithoutAMarkStays) {
  machine_.files.Put(kFolder + L"\\config.ini", "the only copy");
  Sweep();
  EXPECT_EQ(machine_.files.Bytes(kFolder + L"\\config.ini"), "the only copy");
}

TEST_F(SweepTest, FolderOfAnotherNameStays) {
  for (const wchar_t* name :
       {L"data", L"00112233-4455-6677-8899-aabbCCDDEEFG", L"00112233-4455-6677-8899-aabbCCDDEEFF0",
        L"00112233x4455-6677-8899-aabbCCDDEEFF"}) {
    const std::wstring mark = kTemp + name + L"\\" + kRunFolderMark;
    machine_.files.Put(mark, "");
    Sweep();
    EXPECT_TRUE(machine_.files.Has(mark)) << ToUtf8(name);
  }
}

// A folder or a link of the mark's name is no mark.
class LinkedFiles : public ForwardingFiles {
 public:
  LinkedFiles(FileSystem& files, std::wstring link)
      : ForwardingFiles(files), link_(std::move(link)) {}
  bool IsLink(const std::wstring& path) const override { return path == link_; }

 private:
  std::wstring link_;
};

TEST_F(SweepTest, LinksAreNotFollowed) {
  for (const std::wstring& link : {kFolder, kMark}) {
    machine_.files.Put(kMark, "");
    machine_.files.Put(kFolder + L"\\x.txt", "of another folder");
    LinkedFiles files(machine_.files, link);
    SweepRunFolders(With<&Machine::files>(machine_.Ports(), files));
    EXPECT_TRUE(machine_.files.Has(kFolder + L"\\x.txt")) << ToUtf8(link);
  }
}

TEST_F(SweepTest, FolderThatCannotBeEmptiedKeepsItsMark) {
  machine_.files.Put(kMark, "");
  machine_.files.Put(kFolder + L"\\a\\x.txt", "x");
  machine_.files.Put(kFolder + L"\\z.txt", "z");
  machine_.files.MakeReadOnly(kFolder + L"\\a\\x.txt");
  Sweep();
  EXPECT_TRUE(machine_.files.Has(kMark));
  EXPECT_FALSE(machine_.files.Has(kFolder + L"\\z.txt"));
}

TEST_F(SweepTest, WithoutATemporaryPathNothingIsDone) {
  machine_.files.Put(kMark, "");
  machine_.folders.temp.reset();
  Sweep();
  EXPECT_TRUE(machine_.files.Has(kMark));
}

// On the machine's own files.
class RunFolderTest : public testing::Test {
 protected:
  RunFolderTest() { folders_.temp = machine_->ScratchFolder(); }

  Machine Ports() {
    const Machine ports = machine_->Ports();
    return With<&Machine::guids>(With<&Machine::folders>(ports, folders_), guids_);
  }
  void Sweep() { SweepRunFolders(Ports()); }

  std::unique_ptr<TestMachine> machine_ = NewTestMachine();
  FixedFolders folders_;
  FixedGuids guids_;
  ProductContext context_;
};

TEST_F(RunFolderTest, StagingFolderInUseIsNotSwept) {
  ASSERT_TRUE(CreateStagingFolder(context_, Ports()));
  machine_->PutFile(context_.stagingFolder + L"config.ini", "x");
  Sweep();
  EXPECT_EQ(machine_->FileBytes(context_.stagingFolder + L"config.ini"), "x");
  DeleteStagingFolder(context_, Ports());
  EXPECT_TRUE(ListFolder(*Ports().files, machine_->ScratchFolder()).empty());
}

TEST_F(RunFolderTest, AbandonedStagingFolderIsSwept) {
  const std::wstring folder = machine_->ScratchFolder() + L"FFEEDDCC-4455-6677-8899-AABBCCDDEEFF";
  machine_->PutFile(folder + L"\\" + kRunFolderMark, "");
  machine_->PutFile(folder + L"\\Local\\x.txt", "x");
  Sweep();
  EXPECT_FALSE(Ports().files->Exists(folder));
}

TEST_F(RunFolderTest, FolderThatHoldsTheOnlyCopyIsKept) {
  ASSERT_TRUE(CreateStagingFolder(context_, Ports()));
  machine_->PutFile(context_.stagingFolder + L"Local\\x.txt", "only copy");
  KeepRunFolder(*Ports().files,
                context_.stagingFolder.substr(0, context_.stagingFolder.size() - 1));
  Sweep();
  EXPECT_EQ(machine_->FileBytes(context_.stagingFolder + L"Local\\x.txt"), "only copy");
}

TEST_F(RunFolderTest, StagingFolderThatWasThereIsNotMarked) {
  machine_->PutFile(machine_->ScratchFolder() + guids_.guid->substr(1, 36) + L"\\x.txt", "x");
  ASSERT_TRUE(CreateStagingFolder(context_, Ports()));
  EXPECT_FALSE(Ports().files->Exists(context_.stagingFolder + kRunFolderMark));
}

TEST_F(RunFolderTest, SpoolOfAPreviewIsMarkedWhileItLives) {
  auto overlay = OverlayMachine::Open(Ports()).object;
  ASSERT_TRUE(overlay);
  const std::wstring mark =
      machine_->ScratchFolder() + guids_.guid->substr(1, 36) + L"\\" + kRunFolderMark;
  EXPECT_TRUE(Ports().files->Exists(mark));
  Sweep();
  EXPECT_TRUE(Ports().files->Exists(mark));
  overlay.reset();
  EXPECT_TRUE(ListFolder(*Ports().files, machine_->ScratchFolder()).empty());
}

TEST_F(RunFolderTest, ClearingAPathTakesFilesAndFolders) {
  FileSystem& files = *Ports().files;
  const std::wstring path = machine_->ScratchFolder() + L"x";
  EXPECT_TRUE(ClearPath(files, path));
  machine_->PutFile(path, "x");
  EXPECT_TRUE(ClearPath(files, path));
  machine_->PutFile(path + L"\\y\\z", "z");
  EXPECT_TRUE(ClearPath(files, path));
  EXPECT_FALSE(files.Exists(path));
}

}  // namespace
}  // namespace carrovan
