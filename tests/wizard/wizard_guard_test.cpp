// What guards the wizard's runs: the question of trust, restore points and their undoing, and the
// window that shows what a run would change.

#include "tests/wizard/guarded_wizard.h"
#include "tests/zip/raw_zip.h"

namespace carrovan {
namespace {

using enum WizardPage;

class RunningProduct : public ProcessList {
 public:
  bool runs = true;

  std::vector<std::wstring> ExecutableNames() const override {
    return runs ? Texts{L"explorer.exe", L"vantric.EXE"} : Texts();
  }
};

TEST_F(GuardedWizard, ImportKeepsARestorePointThatUndoPutsBack) {
  ImportTemplate();
  EXPECT_EQ(Points().size(), 1u);
  EXPECT_TRUE(frame_.details.canUndo);
  frame_.questions.clear();
  flow_.UndoLast();
  EXPECT_EQ(Template(), "mine");
  ASSERT_EQ(frame_.questions.size(), 1u);
  EXPECT_EQ(frame_.questions[0],
            L"Put back everything that the import into version 2026 has changed?\n\n"
            L"Time: 2026-03-04 05:06:07 UTC\nPackage: " +
                Package());
  EXPECT_EQ(frame_.messages, (Texts{L"Items put back: 1"}));
  EXPECT_FALSE(frame_.details.canUndo);
  EXPECT_EQ(frame_.details.lines, (Texts{L"What this run changed has been undone."}));
}

TEST_F(GuardedWizard, ResetKeepsARestorePointThatUndoPutsBack) {
  OpenIn(MigrationMode::kReset);
  flow_.Next();
  flow_.Next();
  EXPECT_EQ(Template(), "none");
  EXPECT_TRUE(frame_.details.canUndo);
  EXPECT_TRUE(AnyHolds(frame_.details.lines, L"Document Template: reset"));
  flow_.UndoLast();
  EXPECT_EQ(Template(), "mine");
  EXPECT_TRUE(AnyHolds(frame_.questions, L"that the reset of version 2026 has changed"));
}

TEST_F(GuardedWizard, LegacyImportKeepsARestorePoint) {
  machine_->PutFile(Scene(), "<mine/>");
  MakeLegacyPackage(machine_->ScratchFolder() + L"old.ucx");
  OpenIn(MigrationMode::kImport);
  state_.package.path = machine_->ScratchFolder() + L"old.ucx";
  flow_.Next();
  flow_.Next();
  ASSERT_EQ(frame_.Page(), kFinish);
  EXPECT_TRUE(frame_.details.canUndo);
  const auto scene = Scene();
  EXPECT_NE(machine_->FileBytes(scene), "<mine/>");
  flow_.UndoLast();
  EXPECT_EQ(machine_->FileBytes(scene), "<mine/>");
}

TEST_F(GuardedWizard, UndoLeavesTheFinishPageOfAnExportAsItIs) {
  ImportTemplate();
  flow_.Finish();  // "Home"
  ChooseMode(state_, context_, MigrationMode::kExport);
  for (int step = 0; step < 3; ++step) flow_.Next();
  ASSERT_EQ(frame_.Page(), kFinish);
  const FinishDetails exported = frame_.details;
  flow_.UndoLast();
  EXPECT_EQ(Template(), "mine");
  EXPECT_EQ(frame_.details, exported);
}

TEST_F(GuardedWizard, UndoThatIsNotConfirmedChangesNothing) {
  ImportTemplate();
  frame_.yes = false;
  flow_.UndoLast();
  EXPECT_EQ(Template(), "theirs");
  EXPECT_TRUE(frame_.details.canUndo);
}

TEST_F(GuardedWizard, UndoWithoutARestorePointSaysSo) {
  OpenIn(MigrationMode::kNone);
  flow_.UndoLast();
  EXPECT_EQ(frame_.messages, (Texts{L"There is nothing to undo."}));
  EXPECT_TRUE(frame_.questions.empty());
}

TEST_F(GuardedWizard, WhatIsUndoneIsNotOfferedAgainButTheRunBeforeItIs) {
  ImportTemplate();
  machine_->clock.now += std::chrono::minutes(1);
  flow_.Finish();  // "Home"
  ChooseMode(state_, context_, MigrationMode::kReset);
  flow_.Next();
  flow_.Next();
  ASSERT_EQ(Template(), "none");
  flow_.UndoLast();
  EXPECT_EQ(Template(), "theirs");
  flow_.UndoLast();
  EXPECT_EQ(Template(), "mine");
  flow_.UndoLast();
  EXPECT_EQ(frame_.messages.back(), L"There is nothing to undo.");
}

TEST_F(GuardedWizard, UndoListsWhatWasChangedSinceAndOverwritesItOnlyWhenAsked) {
  ImportTemplate();
  machine_->PutFile(Roaming(kTemplate), "edited since");
  flow_.UndoLast();
  EXPECT_EQ(Template(), "edited since");
  ASSERT_EQ(frame_.listQuestions.size(), 1u);
  EXPECT_EQ(frame_.listQuestions[0].yes, StringId::kOverwriteToo);
  EXPECT_TRUE(AnyHolds(TextsOf(frame_.listQuestions[0].lines), L"part.tpl"));

  frame_.yesToLists = true;
  flow_.UndoLast();
  EXPECT_EQ(Template(), "mine");
}

TEST_F(GuardedWizard, WithoutARestorePointTheUserDecides) {
  MakeTemplatePackage();
  BlockRestorePoints();
  GoToImportCategories();
  frame_.yes = false;
  flow_.Finish();
  EXPECT_EQ(frame_.Page(), kImportCategories);
  EXPECT_EQ(state_.pageIndex, 2);
  EXPECT_EQ(Template(), "mine");
  ASSERT_EQ(frame_.questions.size(), 1u);
  EXPECT_TRUE(frame_.questions[0].starts_with(L"No restore point can be kept:\n"));

  frame_.yes = true;
  flow_.Finish();
  EXPECT_EQ(frame_.Page(), kFinish);
  EXPECT_EQ(Template(), "theirs");
  EXPECT_FALSE(frame_.details.canUndo);
}

TEST_F(GuardedWizard, PackageWithReasonsAgainstItIsUnpackedOnlyWhenTheUserSaysYes) {
  MakePackageOf({L"Document Template"}, {{L"Roaming\\Microsoft\\Start Menu\\x.exe", "evil"}});
  OpenIn(MigrationMode::kImport);
  state_.package.path = Package();
  flow_.Next();
  flow_.Next();
  EXPECT_EQ(frame_.Page(), kPath);
  EXPECT_TRUE(import_.calls.empty());
  ASSERT_EQ(frame_.listQuestions.size(), 1u);
  EXPECT_EQ(frame_.listQuestions[0].no, StringId::kNo);
  EXPECT_TRUE(AnyHolds(TextsOf(frame_.listQuestions[0].lines), L"x.exe: "));

  frame_.yesToLists = true;
  flow_.Next();
  EXPECT_EQ(frame_.Page(), kImportCategories);
  EXPECT_EQ(import_.calls, (std::vector<std::string>{"enter"}));
}

TEST_F(GuardedWizard, LegacyPackageWithReasonsAgainstItIsTakenOnlyWhenTheUserSaysYes) {
  const std::wstring path = machine_->ScratchFolder() + L"old.ucx";
  RawItem document;
  document.name = "Scene_UI.xml";
  document.data = "<s/>";
  RawItem outside = document;
  outside.name = "../run.exe";
  machine_->PutFile(path, RawZip({document, outside}));
  OpenIn(MigrationMode::kImport);
  flow_.Next();
  frame_.pathPage.answer = path;
  flow_.SelectFile(frame_.pathPage);
  EXPECT_EQ(frame_.listQuestions.size(), 1u);
  EXPECT_EQ(state_.package.path, L"");
  EXPECT_EQ(frame_.pathPage.shownPath, L"");

  frame_.yesToLists = true;
  flow_.SelectFile(frame_.pathPage);
  EXPECT_EQ(state_.package.path, path);
}

TEST_F(GuardedWizard, OrdinaryPackageAsksNothing) {
  ImportTemplate();
  EXPECT_TRUE(frame_.listQuestions.empty());
  EXPECT_TRUE(frame_.questions.empty());
  EXPECT_TRUE(frame_.messages.empty());
}

TEST_F(GuardedWizard, RunningProductHoldsUpImportResetAndUndo) {
  MakeTemplatePackage();
  RunningProduct running;
  running.runs = false;
  WizardFlow flow = FlowOn(With<&Machine::processes>(Wired(), running));
  ASSERT_TRUE(flow.Open());
  flow.Start();
  ChooseMode(state_, context_, MigrationMode::kImport);
  state_.package.path = Package();
  frame_.selectedVersions[kPath] = L"2026";
  flow.Next();
  flow.Next();
  running.runs = true;
  flow.Finish();
  const std::wstring close = L"Please close the product before running it again";
  EXPECT_EQ(frame_.messages, (Texts{close}));
  EXPECT_EQ(frame_.Page(), kImportCategories);
  EXPECT_EQ(Template(), "mine");
  running.runs = false;
  flow.Finish();
  EXPECT_EQ(Template(), "theirs");

  running.runs = true;
  flow.UndoLast();
  EXPECT_EQ(Template(), "theirs");
  EXPECT_EQ(frame_.messages, (Texts{close, close}));

  flow.Finish();
  ChooseMode(state_, context_, MigrationMode::kReset);
  flow.Next();
  flow.Next();
  EXPECT_EQ(Template(), "theirs");
  EXPECT_EQ(frame_.messages, (Texts{close, close, close}));
  EXPECT_EQ(frame_.Page(), kResetCategories);
  EXPECT_EQ(state_.pageIndex, 1);
  running.runs = false;
  flow.Next();
  EXPECT_EQ(Template(), "none");
}

TEST_F(GuardedWizard, ChangesAreShownAndNothingChanges) {
  MakeTemplatePackage();
  GoToImportCategories();
  flow_.ShowChanges();
  EXPECT_EQ(Template(), "mine");
  EXPECT_TRUE(Points().empty());
  ASSERT_EQ(frame_.listQuestions.size(), 1u);
  const ListQuestion& shown = frame_.listQuestions[0];
  EXPECT_EQ(shown.text, L"What the import of the ticked categories would change:");
  EXPECT_EQ(shown.lines, (std::vector<ListedLine>{{0, L"Document Template – files replaced: 1"},
                                                  {1, L"replaced: " + Roaming(kTemplate)}}));
  EXPECT_EQ(shown.yes, std::nullopt);

  // The package lies in the staging folder as before.
  flow_.Finish();
  EXPECT_EQ(Template(), "theirs");
}

TEST_F(GuardedWizard, ChangesAreThoseOfTheTickedCategories) {
  MakeTemplatePackage();
  GoToImportCategories();
  frame_.trees[kImportCategories].SetAllChecked(false);
  flow_.ShowChanges();
  EXPECT_TRUE(frame_.listQuestions.empty());
  EXPECT_EQ(frame_.messages, (Texts{L"Nothing would change."}));
}

TEST_F(GuardedWizard, ChangesOfAResetAreShownToo) {
  OpenIn(MigrationMode::kReset);
  flow_.Next();
  flow_.ShowChanges();
  EXPECT_EQ(Template(), "mine");
  ASSERT_EQ(frame_.listQuestions.size(), 1u);
  EXPECT_EQ(frame_.listQuestions[0].text, L"What the reset of the ticked categories would change:");
  EXPECT_TRUE(AnyHolds(TextsOf(frame_.listQuestions[0].lines), L"removed: " + Roaming(kTemplate)));
}

TEST_F(GuardedWizard, ShownChangesAreSavedAsText) {
  MakeTemplatePackage();
  GoToImportCategories();
  frame_.saveAnswer = machine_->ScratchFolder() + L"changes.txt";
  frame_.whileAsking = [&] {
    if (frame_.saveQuestions.empty()) frame_.listQuestions.at(0).save();
  };
  flow_.ShowChanges();
  EXPECT_EQ(machine_->FileBytes(*frame_.saveAnswer),
            "\xEF\xBB\xBFWhat the import of the ticked categories would change:\r\n\r\n"
            "Document Template \xE2\x80\x93 files replaced: 1\r\n  replaced: " +
                ToUtf8(Roaming(kTemplate)) + "\r\n");
}

TEST_F(GuardedWizard, ListThatCannotBeSavedSaysWhy) {
  MakeTemplatePackage();
  GoToImportCategories();
  frame_.saveAnswer = machine_->ScratchFolder() + L"none\\changes.txt";
  frame_.whileAsking = [&] {
    if (frame_.saveQuestions.empty()) frame_.listQuestions.at(0).save();
  };
  flow_.ShowChanges();
  ASSERT_EQ(frame_.messages.size(), 1u);
  EXPECT_TRUE(frame_.messages[0].starts_with(L"The list could not be saved: "));
}

TEST_F(GuardedWizard, EmptiedCategoryIsNamedBeforeAndAfterTheImport) {
  MakePackageOf({L"Document Template"}, {});
  GoToImportCategories();
  flow_.ShowChanges();
  ASSERT_EQ(frame_.listQuestions.size(), 1u);
  EXPECT_TRUE(AnyHolds(TextsOf(frame_.listQuestions[0].lines), L"would be emptied"));
  flow_.Finish();
  EXPECT_EQ(frame_.details.lines,
            (Texts{L"Document Template: emptied, since the package holds nothing of it"}));
  EXPECT_EQ(Template(), "none");
}

TEST_F(GuardedWizard, FinishPageListsEachCategoryOfAnImport) {
  MakePackageOf({L"Document Template", L"Shortcut key"}, {{EntryOf(kTemplate), "theirs"}});
  GoToImportCategories();
  RecordingTree& tree = frame_.trees[kImportCategories];
  tree.SetChecked(tree.NextSibling(tree.FirstChild(tree.Root())), false);
  flow_.Finish();
  EXPECT_EQ(frame_.details.lines,
            (Texts{L"Document Template: imported", L"Shortcut key: left out"}));
  EXPECT_EQ(frame_.details.packagePath, L"");
}

TEST_F(GuardedWizard, FinishPageListsEachCategoryOfAnExportAndKnowsWhereThePackageIs) {
  OpenIn(MigrationMode::kExport);
  flow_.Next();
  flow_.Next();
  flow_.Next();
  ASSERT_EQ(frame_.Page(), kFinish);
  EXPECT_EQ(frame_.details.packagePath, *frame_.saveAnswer);
  EXPECT_TRUE(AnyHolds(frame_.details.lines, L"Document Template: exported"));
  EXPECT_TRUE(AnyHolds(frame_.details.lines, L"Sheet Metal Library: there is nothing"));
  EXPECT_FALSE(frame_.details.canUndo);
  flow_.Finish();
  EXPECT_EQ(frame_.details, FinishDetails());
}

TEST_F(GuardedWizard, FinishPageSaysWhyNoPackageWasWritten) {
  machine_->MakeFolder(*frame_.saveAnswer);
  OpenIn(MigrationMode::kExport);
  flow_.Next();
  flow_.Next();
  flow_.Next();
  ASSERT_EQ(frame_.details.lines.size(), 1u);
  EXPECT_TRUE(frame_.details.lines[0].starts_with(L"The package was not written: "));
  EXPECT_EQ(frame_.details.packagePath, L"");
}

TEST_F(GuardedWizard, BackupSaysWhereItIsAndWhyItIsNot) {
  OpenIn(MigrationMode::kReset);
  flow_.Next();
  flow_.OneClickBackup();
  EXPECT_EQ(frame_.backupText, L"The backup is in " + *frame_.saveAnswer);
  frame_.saveAnswer = machine_->ScratchFolder() + L"none\\x.ucex";
  flow_.OneClickBackup();
  EXPECT_TRUE(frame_.backupText.starts_with(L"The backup was not written: "));
  flow_.Back();
  flow_.Next();
  EXPECT_EQ(frame_.backupText, L"");
}

TEST_F(GuardedWizard, ProgressMovesForwardAndIsGoneAfterTheRun) {
  ImportTemplate();
  EXPECT_FALSE(frame_.isProgressShown);
  ASSERT_FALSE(frame_.progress.empty());
  EXPECT_TRUE(std::ranges::any_of(frame_.progress,
                                  [](const auto& step) { return step.second == L"part.tpl"; }));
  EXPECT_TRUE(std::ranges::any_of(
      frame_.progress, [](const auto& step) { return step.second == L"Document Template"; }));
  EXPECT_LT(frame_.progress.back().first, 1000);
}

TEST_F(GuardedWizard, PackageFileOpensThePathPageOfAnImport) {
  MakeTemplatePackage();
  OpenIn(MigrationMode::kNone);
  flow_.OpenPackageFile(Package());
  EXPECT_EQ(frame_.Page(), kPath);
  EXPECT_EQ(state_.mode, MigrationMode::kImport);
  EXPECT_EQ(context_.mode, MigrationMode::kImport);
  EXPECT_EQ(frame_.shownMode, MigrationMode::kImport);
  EXPECT_EQ(frame_.pathPage.shownPath, Package());
  EXPECT_EQ(frame_.pathPage.versions, (Texts{L"2025", L"2026"}));
  EXPECT_EQ(state_.package.path, Package());
  flow_.Next();
  EXPECT_EQ(frame_.Page(), kImportCategories);
}

TEST_F(GuardedWizard, LegacyPackageFileOpensWithTheVersionThatItIsFor) {
  MakeLegacyPackage(machine_->ScratchFolder() + L"old.UCX");
  OpenIn(MigrationMode::kReset);
  flow_.Next();
  flow_.OpenPackageFile(machine_->ScratchFolder() + L"old.UCX");
  EXPECT_EQ(frame_.Page(), kPath);
  EXPECT_EQ(frame_.pathPage.versions, (Texts{L"2026"}));
}

TEST_F(GuardedWizard, FileThatIsNoPackageIsNotOpened) {
  OpenIn(MigrationMode::kNone);
  flow_.OpenPackageFile(machine_->ScratchFolder() + L"photo.jpg");
  EXPECT_EQ(frame_.messages, (Texts{L"Please select a file"}));
  EXPECT_EQ(frame_.Page(), kStart);
  EXPECT_EQ(state_.mode, MigrationMode::kNone);
}

}  // namespace
}  // namespace carrovan
