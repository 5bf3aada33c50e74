#include "reset/folder_wipe.h"

#include <gtest/gtest.h>

#include "tests/support/fakes.h"
#include "tests/support/test_machine.h"

namespace carrovan {
namespace {

class FolderWipe : public testing::Test {
 protected:
  FileSystem& Files() { return machine_->Ports().files; }
  std::wstring Folder() const { return machine_->ScratchFolder() + L"wiped"; }

  std::unique_ptr<TestMachine> machine_ = NewTestMachine();
};

TEST_F(FolderWipe, TakesTheFolderWithEverythingBelow) {
  machine_->PutFile(Folder() + L"\\a\\b\\c\\x.txt", "x");
  machine_->PutFile(Folder() + L"\\深\\\U0001F600.txt", "x");
  machine_->PutFile(Folder() + L"\\.hidden", "x");
  machine_->MakeFolder(Folder() + L"\\empty");
  machine_->PutFile(machine_->ScratchFolder() + L"neighbour.txt", "stays");
  EXPECT_TRUE(WipeFolder(Files(), Folder()));
  EXPECT_FALSE(Files().Exists(Folder()));
  EXPECT_TRUE(Files().Exists(machine_->ScratchFolder() + L"neighbour.txt"));
}

TEST_F(FolderWipe, FolderThatIsGoneIsNoFailure) { EXPECT_TRUE(WipeFolder(Files(), Folder())); }

TEST_F(FolderWipe, FolderThatCannotBeListedIsNotWhollyGone) {
  class Unlisted : public ForwardingFiles {
   public:
    using ForwardingFiles::ForwardingFiles;
    SystemCode ReadFolder(const std::wstring& folder,
                          std::vector<FolderEntry>& entries) const override {
      if (folder.ends_with(L"\\secret")) return kAccessDenied;
      return ForwardingFiles::ReadFolder(folder, entries);
    }
  };
  machine_->PutFile(Folder() + L"\\secret\\x.txt", "x");
  machine_->PutFile(Folder() + L"\\y.txt", "x");
  Unlisted files(Files());
  EXPECT_FALSE(WipeFolder(files, Folder()));
  EXPECT_FALSE(WipeFolder(files, Folder() + L"\\secret"));
  EXPECT_TRUE(Files().Exists(Folder() + L"\\secret\\x.txt"));
  EXPECT_FALSE(Files().Exists(Folder() + L"\\y.txt"));
}

TEST_F(FolderWipe, FileInPlaceOfTheFolderStays) {
  machine_->PutFile(Folder(), "a file");
  EXPECT_FALSE(WipeFolder(Files(), Folder()));
  EXPECT_EQ(machine_->FileBytes(Folder()), "a file");
}

TEST_F(FolderWipe, ReadOnlyFileStaysWithTheFoldersAboveAndTheRestGoes) {
  machine_->PutFile(Folder() + L"\\a\\kept.txt", "read-only");
  machine_->PutFile(Folder() + L"\\a\\other.txt", "x");
  machine_->PutFile(Folder() + L"\\b\\x.txt", "x");
  machine_->MakeReadOnly(Folder() + L"\\a\\kept.txt");
  EXPECT_FALSE(WipeFolder(Files(), Folder()));
  EXPECT_EQ(machine_->FileBytes(Folder() + L"\\a\\kept.txt"), "read-only");
  EXPECT_FALSE(Files().Exists(Folder() + L"\\a\\other.txt"));
  EXPECT_FALSE(Files().Exists(Folder() + L"\\b"));
}

TEST_F(FolderWipe, EmptyPathTouchesNothing) {
  machine_->PutFile(machine_->ScratchFolder() + L"x.txt", "x");
  WipeFolder(Files(), L"");
  EXPECT_TRUE(Files().Exists(machine_->ScratchFolder() + L"x.txt"));
}

}  // namespace
}  // namespace carrovan
