// What a run does around links, and the way back.
#include <gtest/gtest.h>

#include <map>

#include "platform/file_operations.h"
#include "restore/recorded_machine.h"
#include "restore/restore_point.h"
#include "restore/undo_run.h"
#include "tests/support/test_links.h"
#include "tests/support/test_machine.h"

namespace carrovan {
namespace {

constexpr int kSharedFiles = 72;

using Contents = std::map<std::wstring, std::string>;

// A version's folder in the real profile, and a shared folder elsewhere to which a link leads.
class UndoLinks : public testing::Test {
 protected:
  UndoLinks() {
    for (int i = 0; i < kSharedFiles; ++i) {
      const std::wstring name = (i % 2 == 0 ? L"\\" : L"\\sub\\") + std::to_wstring(i) + L".xml";
      shared_[name] = std::to_string(i);
      machine_->PutFile(Shared() + name, shared_[name]);
    }
  }
  ~UndoLinks() override {
    recorder_.reset();
    if (!id_.empty()) WipeFolder(*ports_.files, Root() + L"\\" + id_);
  }

  std::wstring Root() const { return *RestoreRoot(*ports_.folders); }
  std::wstring Shared() const { return machine_->ScratchFolder() + L"shared"; }
  std::wstring Product() const {
    return *ports_.folders->RoamingAppData() + L"\\Vantric\\" + machine_->product.productName;
  }
  std::wstring Category() const { return Product() + L"\\28.0\\en-us\\Customization"; }

  bool Link(const std::wstring& path) { return MakeLink(*machine_, path, Shared()); }

  FileSystem& Begin() {
    recorder_ = ChangeRecorder::Begin(ports_, {L"import", L"2026", L""}).object;
    id_ = recorder_->Id();
    recorded_ = std::make_unique<RecordedMachine>(ports_, *recorder_);
    run_ = std::make_unique<Machine>(recorded_->Ports());
    return *run_->files;
  }

  UndoReport Undo(bool force = false, bool trusted = false) {
    UndoChoice choice;
    choice.force = force;
    choice.trusted = trusted;
    return UndoChanges(*ReadRestorePoint(*ports_.files, Root(), id_), choice, ports_);
  }

  void ExpectUndone() {
    const UndoReport report = Undo();
    EXPECT_EQ(report.problems, std::vector<std::wstring>());
    EXPECT_EQ(report.kept, std::vector<std::wstring>());
    EXPECT_EQ(report.refused, std::vector<std::wstring>());
    EXPECT_EQ(Undo().restored, 0u);
  }

  void ExpectSharedIsWhole() {
    for (const auto& [name, bytes] : shared_) {
      EXPECT_EQ(machine_->FileBytes(Shared() + name), bytes);
    }
    EXPECT_EQ(ListFolder(*ports_.files, Shared()).size(), kSharedFiles / 2 + 1u);
    EXPECT_EQ(ListFolder(*ports_.files, Shared() + L"\\sub").size(), kSharedFiles / 2 + 0u);
  }

  Contents shared_;
  std::unique_ptr<TestMachine> machine_ = NewTestMachine();
  Machine ports_ = machine_->Ports();
  std::unique_ptr<ChangeRecorder> recorder_;
  std::wstring id_;
  std::unique_ptr<RecordedMachine> recorded_;
  std::unique_ptr<Machine> run_;
};

// As for a ticked category: the target's folder goes and the package's takes its place.
TEST_F(UndoLinks, CategoryFolderThatIsALinkGoesAloneAndComesBack) {
  if (!Link(Category())) GTEST_SKIP() << "this system makes no links";
  FileSystem& files = Begin();
  EXPECT_TRUE(WipeFolder(files, Category()));
  ExpectSharedIsWhole();
  EXPECT_EQ(files.CreateFolder(Category()), kSystemOk);
  EXPECT_EQ(files.WriteBytes(Category() + L"\\0.xml", "0"), kSystemOk);
  EXPECT_EQ(files.WriteBytes(Category() + L"\\2.xml", "the package's"), kSystemOk);
  EXPECT_EQ(files.WriteBytes(Category() + L"\\new.xml", "the package's"), kSystemOk);
  recorder_->End();
  ExpectUndone();
  EXPECT_TRUE(ports_.files->IsLink(Category()));
  ExpectSharedIsWhole();
}

TEST_F(UndoLinks, BringsBackALinkBeforeWhatWasChangedBehindIt) {
  if (!Link(Category())) GTEST_SKIP() << "this system makes no links";
  FileSystem& files = Begin();
  for (const auto& [name, bytes] : shared_) {
    EXPECT_EQ(files.RemoveFile(Category() + name), kSystemOk);
  }
  EXPECT_EQ(files.RemoveFolder(Category() + L"\\sub"), kSystemOk);
  EXPECT_EQ(files.WriteBytes(Category() + L"\\made.xml", "behind the link"), kSystemOk);
  EXPECT_EQ(files.RemoveFolder(Category()), kSystemOk);
  EXPECT_EQ(files.CreateFolder(Category()), kSystemOk);
  EXPECT_EQ(files.WriteBytes(Category() + L"\\0.xml", "the package's"), kSystemOk);
  recorder_->End();
  ExpectUndone();
  EXPECT_TRUE(ports_.files->IsLink(Category()));
  ExpectSharedIsWhole();
}

TEST_F(UndoLinks, BringsBackALinkInAFolderThatWentWithIt) {
  const std::wstring link = Category() + L"\\deep\\link";
  if (!Link(link)) GTEST_SKIP() << "this system makes no links";
  FileSystem& files = Begin();
  EXPECT_TRUE(WipeFolder(files, Category()));
  ExpectSharedIsWhole();
  EXPECT_EQ(files.WriteBytes(Category(), "a file now"), kSystemOk);
  recorder_->End();
  ExpectUndone();
  EXPECT_TRUE(ports_.files->IsLink(link));
  ExpectSharedIsWhole();
}

TEST_F(UndoLinks, WorksThroughALinkThatStandsForTheVersionsFolder) {
  if (!Link(Product() + L"\\28.0")) GTEST_SKIP() << "this system makes no links";
  FileSystem& files = Begin();
  EXPECT_TRUE(WipeFolder(files, Product() + L"\\28.0\\sub"));
  EXPECT_EQ(files.WriteBytes(Product() + L"\\28.0\\0.xml", "changed"), kSystemOk);
  recorder_->End();
  ExpectUndone();
  ExpectSharedIsWhole();
}

TEST_F(UndoLinks, LeavesALinkAwayWhileItsPlaceHoldsWhatWasAdded) {
  if (!Link(Category())) GTEST_SKIP() << "this system makes no links";
  FileSystem& files = Begin();
  EXPECT_EQ(files.RemoveFile(Category() + L"\\0.xml"), kSystemOk);
  EXPECT_TRUE(WipeFolder(files, Category()));
  EXPECT_EQ(files.CreateFolder(Category()), kSystemOk);
  recorder_->End();
  machine_->PutFile(Category() + L"\\mine.xml", "mine");
  EXPECT_EQ(Undo().kept,
            std::vector<std::wstring>{L"Kept, as it holds what was added since: " + Category()});
  EXPECT_EQ(machine_->FileBytes(Category() + L"\\mine.xml"), "mine");
  EXPECT_FALSE(ports_.files->Exists(Category() + L"\\0.xml"));
  machine_->DeletePath(Category() + L"\\mine.xml");
  ExpectUndone();
  ExpectSharedIsWhole();
}

TEST_F(UndoLinks, PutsNoFileBackThroughALinkInItsPlace) {
  const std::wstring file = Category() + L"\\0.xml";
  machine_->PutFile(file, "before");
  Begin();
  EXPECT_EQ(recorder_->FileChanges(file), kSystemOk);
  recorder_.reset();  // as a kill ends it
  machine_->DeletePath(file);
  if (!Link(file)) GTEST_SKIP() << "this system makes no links";
  EXPECT_EQ(Undo().kept.size(), 1u);
  ExpectSharedIsWhole();
  EXPECT_TRUE(Undo(true).IsComplete());
  EXPECT_FALSE(ports_.files->IsLink(file));
  EXPECT_EQ(machine_->FileBytes(file), "before");
  ExpectSharedIsWhole();
}

TEST_F(UndoLinks, RefusesAJournalWhosePathsLieBehindAnotherLink) {
  if (!Link(Category())) GTEST_SKIP() << "this system makes no links";
  FileSystem& files = Begin();
  EXPECT_EQ(files.WriteBytes(Category() + L"\\0.xml", "changed"), kSystemOk);
  recorder_->End();
  const UndoReport report = Undo(true);
  ASSERT_EQ(report.refused.size(), 1u);
  EXPECT_EQ(report.refused[0], Category() + L"\\0.xml lies behind the link " + Category());
  EXPECT_EQ(machine_->FileBytes(Shared() + L"\\0.xml"), "changed");
  EXPECT_TRUE(Undo(false, true).IsComplete());
  ExpectSharedIsWhole();
}

TEST_F(UndoLinks, ReadsNoRestorePointThatIsALink) {
  Begin();
  const std::wstring id = L"2001-01-01T000000Z";
  if (!MakeLink(*machine_, Root() + L"\\" + id, Root() + L"\\" + recorder_->Id())) {
    GTEST_SKIP() << "this system makes no links";
  }
  EXPECT_FALSE(ReadRestorePoint(*ports_.files, Root(), id));
}

TEST_F(UndoLinks, FileOverALinkTakesTheLinksPlaceAndLeavesWhatLiesBehind) {
  const std::wstring link = Category() + L"\\a.xml";
  if (!MakeLink(*machine_, link, Shared() + L"\\0.xml") || !machine_->FileBytes(link)) {
    GTEST_SKIP() << "this system makes no links to files";
  }
  FileSystem& files = Begin();
  EXPECT_EQ(files.MoveTo(link, Category() + L"\\b.xml"), kAccessDenied);
  EXPECT_EQ(files.AppendBytes(link, "the package's"), kSystemOk);
  EXPECT_EQ(machine_->FileBytes(link), "the package's");
  ExpectSharedIsWhole();
  recorder_->End();
  ExpectUndone();
  EXPECT_TRUE(ports_.files->IsLink(link));
  ExpectSharedIsWhole();
}

}  // namespace
}  // namespace carrovan
