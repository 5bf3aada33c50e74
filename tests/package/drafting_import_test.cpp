#include "package/category_import.h"

#include "package/import_run.h"
#include "tests/package/import_run_fixture.h"
#include "tests/support/test_links.h"
#include "text/path_text.h"

namespace carrovan {
namespace {

using enum SettingCategory;
using Lines = std::vector<std::wstring>;

// The drafting program's folder of release 2026 in the user's Local folder.
class DraftingImportTest : public ImportRunTest {};

// The releases are texts: "2026.0" is another one than "2026".
TEST_F(DraftingImportTest, MenusAreCarriedOverWhenTheReleaseIsSpelledOtherwise) {
  class NotedCopies : public ForwardingFiles {
   public:
    using ForwardingFiles::ForwardingFiles;
    Lines targets;
    SystemCode CopyOver(const std::wstring& source, const std::wstring& target) override {
      targets.push_back(target);
      return ForwardingFiles::CopyOver(source, target);
    }
  };
  const std::wstring menu = OwnDraft(L"Local", L"26.0\\a.UIK");
  NotedCopies files(*ports_.files);
  const Machine machine = With<&Machine::files>(ports_, files);
  context_.stagingLocalFolder = context_.stagingFolder + Draft(L"Local", L"26.0");
  state_.package.draftingFolder = OwnDraft(L"Local", L"26.0");
  machine_->PutFile(context_.stagingLocalFolder + L"\\a.UIK", "package");
  const std::pair<std::wstring, Lines> kReleases[] = {
      {L"2026", {}}, {L"2026.0", {menu}}, {L"02026", {menu}}};
  for (const auto& [release, copied] : kReleases) {
    machine_->PutFile(menu, "own");
    files.targets.clear();
    state_.package.releaseVersion = release;
    ReplaceDraftingFolders(
        {context_, state_.package, machine, *tool_, *dom_, log_, observer_, report_});
    EXPECT_EQ(files.targets, copied) << ToUtf8(release);
    EXPECT_EQ(Content(menu), "no file");
  }
}

TEST_F(DraftingImportTest, TickedReplacesBothHalves) {
  for (const std::wstring half : {L"Local", L"Roaming"}) {
    entries_[Draft(half, L"26.0\\new.ini")] = "package";
    machine_->PutFile(OwnDraft(half, L"26.0\\old.ini"), "own");
  }
  Describe({"2D Draft Settings"});
  Import({Draft2dSettings});
  for (const std::wstring half : {L"Local", L"Roaming"}) {
    EXPECT_EQ(Content(OwnDraft(half, L"26.0\\new.ini")), "package");
    EXPECT_EQ(Content(OwnDraft(half, L"26.0\\old.ini")), "no file");
  }
}

TEST_F(DraftingImportTest, UntickedRemovesBothHalvesOfThePackage) {
  for (const std::wstring half : {L"Local", L"Roaming"}) {
    entries_[Draft(half, L"26.0\\new.ini")] = "package";
    machine_->PutFile(OwnDraft(half, L"26.0\\old.ini"), "own");
  }
  Describe({"2D Draft Settings"});
  Import({});
  for (const std::wstring half : {L"Local", L"Roaming"}) {
    EXPECT_EQ(Content(OwnDraft(half, L"26.0\\new.ini")), "no file");
    EXPECT_EQ(Content(OwnDraft(half, L"26.0\\old.ini")), "own");
  }
}

class CopyProductFolderTreeTest : public ImportFixture {
 protected:
  void Copy(bool recursive, bool same) {
    CopyProductFolderTree(*ports_.files, From(L""), To(L"") + L"\\", recursive, same);
  }
  std::wstring From(const std::wstring& below) const {
    return machine_->ScratchFolder() + L"from\\" + below;
  }
  std::wstring To(const std::wstring& below) const {
    return machine_->ScratchFolder() + L"to\\" + below;
  }
};

TEST_F(CopyProductFolderTreeTest, MenuAndShortcutFilesGoOverNamesakes) {
  for (const std::wstring name : {L"a.UIK", L"b.acc", L"c.Uik", L"d.ini"}) {
    machine_->PutFile(From(name), "new");
    machine_->PutFile(To(name), "old");
  }
  machine_->PutFile(From(L"e.uik"), "new");
  Copy(false, false);
  EXPECT_EQ(Content(To(L"a.UIK")), "new");
  EXPECT_EQ(Content(To(L"b.acc")), "new");
  EXPECT_EQ(Content(To(L"c.Uik")), "new");
  EXPECT_EQ(Content(To(L"d.ini")), "old");
  EXPECT_EQ(Content(To(L"e.uik")), "no file");
}

TEST_F(CopyProductFolderTreeTest, PipesStay) {
  machine_->PutFile(From(L"pipe.UIK"), "");
  machine_->PutFile(To(L"pipe.UIK"), "old");
  SpecialFiles files(*ports_.files, L"pipe.UIK");
  CopyProductFolderTree(files, From(L""), To(L""), false, false);
  EXPECT_EQ(Content(To(L"pipe.UIK")), "old");
}

TEST_F(CopyProductFolderTreeTest, SameReleaseCopiesNothing) {
  machine_->PutFile(From(L"a.UIK"), "new");
  machine_->PutFile(To(L"a.UIK"), "old");
  Copy(true, true);
  EXPECT_EQ(Content(To(L"a.UIK")), "old");
}

TEST_F(CopyProductFolderTreeTest, SubfoldersAreWalkedWhenAskedFor) {
  machine_->PutFile(From(L"sub\\a.UIK"), "new");
  machine_->PutFile(To(L"sub\\a.UIK"), "old");
  Copy(false, false);
  EXPECT_EQ(Content(To(L"sub\\a.UIK")), "old");
  Copy(true, false);
  EXPECT_EQ(Content(To(L"sub\\a.UIK")), "new");
}

TEST_F(CopyProductFolderTreeTest, FileThatCannotBeDeletedIsNotCopiedOver) {
  machine_->PutFile(From(L"a.UIK"), "new");
  machine_->PutFile(To(L"a.UIK"), "old");
  machine_->MakeReadOnly(To(L"a.UIK"));
  Copy(false, false);
  EXPECT_EQ(Content(To(L"a.UIK")), "old");
}

TEST_F(CopyProductFolderTreeTest, NothingIsCopiedBehindALink) {
  machine_->PutFile(From(L"a.UIK"), "new");
  machine_->PutFile(From(L"sub\\b.UIK"), "new");
  const std::wstring shared = machine_->ScratchFolder() + L"shared\\";
  machine_->PutFile(shared + L"a.UIK", "everybody's");
  machine_->PutFile(shared + L"b.UIK", "everybody's");
  machine_->MakeFolder(To(L""));
  if (!MakeLink(*machine_, To(L"sub"), shared)) GTEST_SKIP() << "this system makes no links";
  Copy(true, false);
  EXPECT_EQ(Content(shared + L"b.UIK"), "everybody's");
  machine_->DeletePath(To(L"sub"));
  machine_->DeletePath(WithoutTrailingBackslashes(To(L"")));
  ASSERT_TRUE(MakeLink(*machine_, WithoutTrailingBackslashes(To(L"")), shared));
  Copy(true, false);
  EXPECT_EQ(Content(shared + L"a.UIK"), "everybody's");
}

TEST_F(CopyProductFolderTreeTest, NothingIsCopiedFromBehindALink) {
  const std::wstring shared = machine_->ScratchFolder() + L"shared\\";
  machine_->PutFile(shared + L"a.UIK", "everybody's");
  machine_->PutFile(To(L"a.UIK"), "old");
  if (!MakeLink(*machine_, WithoutTrailingBackslashes(From(L"")), shared)) {
    GTEST_SKIP() << "this system makes no links";
  }
  Copy(true, false);
  EXPECT_EQ(Content(To(L"a.UIK")), "old");
}

}  // namespace
}  // namespace carrovan
