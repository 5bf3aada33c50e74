#include "platform/file_operations.h"

#include <gtest/gtest.h>

#include "tests/support/fakes.h"
#include "tests/support/test_links.h"
#include "tests/support/test_machine.h"

namespace carrovan {
namespace {

class FolderWipe : public testing::Test {
 protected:
  FileSystem& Files() { return *machine_->Ports().files; }
  std::wstring Folder() const { return machine_->ScratchFolder() + L"wiped"; }
  std::wstring Shared() const { return machine_->ScratchFolder() + L"shared"; }

  bool LinkToShared(const std::wstring& path) {
    machine_->PutFile(Shared() + L"\\sub\\x.txt", "everybody's");
    return MakeLink(*machine_, path, Shared());
  }
  void ExpectSharedIsWhole() {
    EXPECT_EQ(machine_->FileBytes(Shared() + L"\\sub\\x.txt"), "everybody's");
  }

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

TEST_F(FolderWipe, OfALinkOnlyTheLinkGoes) {
  if (!LinkToShared(Folder())) GTEST_SKIP() << "this system makes no links";
  EXPECT_TRUE(WipeFolder(Files(), Folder()));
  EXPECT_FALSE(Files().IsLink(Folder()));
  ExpectSharedIsWhole();
}

TEST_F(FolderWipe, OfALinkBelowOnlyTheLinkGoes) {
  if (!LinkToShared(Folder() + L"\\a\\link")) GTEST_SKIP() << "this system makes no links";
  EXPECT_TRUE(WipeFolder(Files(), Folder()));
  EXPECT_FALSE(Files().Exists(Folder()));
  ExpectSharedIsWhole();
}

TEST_F(FolderWipe, LinkThatLeadsNowhereGoes) {
  const std::wstring nowhere = machine_->ScratchFolder() + L"nowhere";
  if (!MakeLink(*machine_, Folder(), nowhere)) GTEST_SKIP() << "this system makes no links";
  EXPECT_TRUE(WipeFolder(Files(), Folder()));
  EXPECT_FALSE(Files().IsLink(Folder()));
}

// Answers the removal of every folder named "held" with a code.
class HeldFolders : public ForwardingFiles {
 public:
  HeldFolders(FileSystem& files, SystemCode code) : ForwardingFiles(files), code_(code) {}
  SystemCode RemoveFolder(const std::wstring& path) override {
    return path.ends_with(L"\\held") ? code_ : ForwardingFiles::RemoveFolder(path);
  }

 private:
  SystemCode code_;
};

TEST_F(FolderWipe, SubfolderThatIsNotEmptyAfterAllIsTolerated) {
  machine_->MakeFolder(Folder() + L"\\held");
  HeldFolders filledAgain(Files(), kFolderNotEmpty);
  EXPECT_TRUE(WipeFolder(filledAgain, Folder()));
  HeldFolders inUse(Files(), kSharingViolation);
  EXPECT_FALSE(WipeFolder(inUse, Folder()));
}

}  // namespace
}  // namespace carrovan
