#include "wizard/wizard_flow.h"

#include "package/staging_folder.h"
#include "tests/wizard/wizard_fixture.h"
#include "text/text.h"
#include "wizard/wizard_frame.h"

namespace carrovan {
namespace {

using Texts = std::vector<std::wstring>;
using enum WizardPage;

class OpeningWizard : public WizardFixture {};

TEST_F(OpeningWizard, MakesTheStagingFolderAndFillsTheContext) {
  ASSERT_TRUE(flow_.Open());
  EXPECT_TRUE(HasStagingFolder());
  EXPECT_EQ(context_.packageDescriptionPath, context_.stagingFolder + L"config.ini");
  EXPECT_TRUE(context_.stagingLocalFolder.starts_with(context_.stagingFolder));
  EXPECT_EQ(context_.productName, machine_->product.productName);
  ASSERT_EQ(context_.installedVersions.size(), 2u);
  EXPECT_EQ(context_.installedVersions[0].internalVersion, L"27.0");
  EXPECT_EQ(context_.installedVersions[1].internalVersion, L"28.0");
  EXPECT_EQ(state_.package.product, machine_->product.productName);
  EXPECT_EQ(state_.package.targetInternalVersion, L"28.0");
  EXPECT_FALSE(frame_.closeAsked);
}

TEST_F(OpeningWizard, UnknownCompanyIsToldAndClosesTheWizard) {
  machine_->product.companyShortName = L"Another";
  EXPECT_FALSE(flow_.Open());
  EXPECT_EQ(frame_.messages, (Texts{L"Please check the ini file"}));
  EXPECT_TRUE(frame_.closeAsked);
}

TEST_F(OpeningWizard, StartPageHasNextAloneAndReadsClose) {
  ASSERT_TRUE(flow_.Open());
  flow_.Start();
  EXPECT_EQ(frame_.pages, (std::vector{kStart}));
  EXPECT_EQ(state_.pageIndex, 0);
  WizardButtons expected;
  expected.nextEnabled = true;
  expected.finishLabel = StringId::kFinish;
  expected.cancelLabel = StringId::kClose;
  EXPECT_EQ(frame_.Buttons(), expected);
}

TEST_F(OpeningWizard, WithoutATemporaryFolderOpensAllTheSame) {
  FixedFolders folders;
  folders.temp.reset();
  WizardFlow flow = FlowOn(PortsWith(folders));
  EXPECT_TRUE(flow.Open());
  flow.Start();
  EXPECT_EQ(frame_.Page(), kStart);
  EXPECT_TRUE(frame_.messages.empty());
}

class WizardWithoutMode : public WizardFixture {
 protected:
  void SetUp() override { OpenIn(MigrationMode::kNone); }
};

TEST_F(WizardWithoutMode, NextAsksForAChoiceAndStays) {
  flow_.Next();
  EXPECT_EQ(frame_.messages, (Texts{L"Please Select"}));
  EXPECT_EQ(state_.pageIndex, 0);
  EXPECT_EQ(frame_.pages.size(), 1u);
}

TEST_F(WizardWithoutMode, BackAndFinishDoNothing) {
  flow_.Back();
  flow_.Finish();
  EXPECT_EQ(state_.pageIndex, 0);
  EXPECT_EQ(frame_.pages.size(), 1u);
  EXPECT_TRUE(frame_.messages.empty());
}

class WizardExportFlow : public WizardFixture {
 protected:
  void SetUp() override { OpenIn(MigrationMode::kExport); }

  RecordingTree& Tree() { return frame_.trees[kExportCategories]; }

  void GoToCategories() {
    flow_.Next();
    flow_.Next();
    ASSERT_EQ(frame_.Page(), kExportCategories);
  }
};

TEST_F(WizardExportFlow, NextLeadsThroughVersionAndCategoriesToTheFinishPage) {
  flow_.Next();
  flow_.Next();
  flow_.Next();
  EXPECT_EQ(frame_.pages, (std::vector{kStart, kVersion, kExportCategories, kFinish}));
  for (int place = 1; place <= 3; ++place) {
    EXPECT_EQ(frame_.buttons[static_cast<std::size_t>(place)],
              ButtonsAt(MigrationMode::kExport, place));
  }
  EXPECT_EQ(state_.pageIndex, 3);
  EXPECT_TRUE(frame_.messages.empty());
}

TEST_F(WizardExportFlow, CategoriesAreThoseOfTheChosenVersionAndItsFoldersAreKnown) {
  flow_.Next();
  SelectVersion(context_, L"2025");
  flow_.Next();
  EXPECT_EQ(Tree().texts.size(), 13u);  // without 3DBOM Configuration
  EXPECT_TRUE(context_.localRoot.ends_with(L"\\27.0"));
  EXPECT_TRUE(context_.registryRoot.ends_with(L" 27.0"));

  flow_.Back();
  SelectVersion(context_, L"2026");
  flow_.Next();
  EXPECT_EQ(Tree().texts.size(), 14u);
  EXPECT_TRUE(context_.localRoot.ends_with(L"\\28.0"));
}

TEST_F(WizardExportFlow, VersionPageThatIsShownAgainWorksOnWhatItShows) {
  struct Case {
    std::wstring workedOn;
    std::wstring shown;
    std::wstring folder;
  };
  for (const Case& c : {Case{L"2025", L"2026", L"\\28.0"}, Case{L"2026", L"2025", L"\\27.0"}}) {
    SelectTargetVersion(state_, context_, c.workedOn);
    frame_.selectedVersions[kVersion] = c.shown;
    flow_.Next();
    EXPECT_EQ(context_.humanReadableVersion, c.shown);
    EXPECT_EQ(context_.selectedVersion, c.shown);
    flow_.Next();
    EXPECT_TRUE(context_.localRoot.ends_with(c.folder)) << ToUtf8(context_.localRoot);
    EXPECT_EQ(Tree().texts.size(), c.shown == L"2026" ? 14u : 13u);
    flow_.Back();
    flow_.Back();
  }
}

TEST_F(WizardExportFlow, BackToTheVersionPageKeepsTheStagingFolder) {
  GoToCategories();
  const std::wstring staging = context_.stagingFolder;
  machine_->PutFile(staging + L"kept.txt", "kept");
  flow_.Back();
  EXPECT_EQ(frame_.Page(), kVersion);
  EXPECT_EQ(context_.stagingFolder, staging);
  EXPECT_EQ(machine_->FileBytes(staging + L"kept.txt"), "kept");
}

TEST_F(WizardExportFlow, EnteringTheCategoriesAgainForgetsTheEarlierChoice) {
  GoToCategories();
  Tree().SetAllChecked(false);
  flow_.Back();
  flow_.Next();
  EXPECT_TRUE(Tree().IsChecked(Tree().Root()));
}

TEST_F(WizardExportFlow, BackToTheStartPageShowsItsLabels) {
  flow_.Next();
  flow_.Back();
  EXPECT_EQ(frame_.Page(), kStart);
  EXPECT_EQ(frame_.Buttons(), ButtonsAt(MigrationMode::kExport, 0));
  EXPECT_EQ(frame_.Buttons().cancelLabel, StringId::kClose);
}

TEST_F(WizardExportFlow, BackOnTheStartPageDoesNothing) {
  flow_.Back();
  EXPECT_EQ(state_.pageIndex, 0);
  EXPECT_EQ(frame_.pages.size(), 1u);
}

TEST_F(WizardExportFlow, SuccessNamesThePackageAndDeletesTheStagingFolder) {
  GoToCategories();
  const std::wstring staging = context_.stagingFolder;
  flow_.Next();
  EXPECT_EQ(frame_.Page(), kFinish);
  EXPECT_EQ(frame_.finishText,
            L"Your settings have been successfully exported to  " + *frame_.saveAnswer);
  EXPECT_TRUE(machine_->FileBytes(*frame_.saveAnswer).has_value());
  EXPECT_FALSE(HasStagingFolder());
}

TEST_F(WizardExportFlow, FinishOnTheCategoriesDoesWhatNextDoes) {
  GoToCategories();
  flow_.Finish();
  EXPECT_EQ(frame_.Page(), kFinish);
  EXPECT_EQ(frame_.saveQuestions.size(), 1u);
}

TEST_F(WizardExportFlow, SaveFileQuestionIsThatOfAPackage) {
  GoToCategories();
  flow_.Next();
  ASSERT_EQ(frame_.saveQuestions.size(), 1u);
  EXPECT_EQ(frame_.saveQuestions[0].defaultExtension, L".ucex");
  EXPECT_EQ(frame_.saveQuestions[0].filter, L"User Configuration Files (*.ucex)|*.ucex|");
  EXPECT_TRUE(frame_.saveQuestions[0].hideReadOnlyBox);
  EXPECT_TRUE(frame_.saveQuestions[0].askBeforeOverwriting);
}

TEST_F(WizardExportFlow, EmptyAnswerStaysWithoutAMessage) {
  GoToCategories();
  frame_.saveAnswer = L"";
  flow_.Next();
  EXPECT_EQ(frame_.Page(), kExportCategories);
  EXPECT_TRUE(frame_.messages.empty());
  EXPECT_EQ(frame_.finishText, L"");
}

TEST_F(WizardExportFlow, NothingCheckedStaysOnTheCategories) {
  GoToCategories();
  Tree().SetAllChecked(false);
  flow_.Next();
  EXPECT_EQ(frame_.messages, (Texts{L"Please select the exported settings"}));
  EXPECT_EQ(state_.pageIndex, 2);
  EXPECT_EQ(frame_.Page(), kExportCategories);
  EXPECT_TRUE(HasStagingFolder());
}

TEST_F(WizardExportFlow, CancelledSaveDialogStaysAndTheChoiceIsKept) {
  GoToCategories();
  Tree().SetChecked(SettingCategory::Register, false);
  frame_.saveAnswer.reset();
  flow_.Next();
  EXPECT_EQ(state_.pageIndex, 2);
  EXPECT_EQ(frame_.Page(), kExportCategories);
  EXPECT_TRUE(frame_.messages.empty());
  EXPECT_FALSE(Tree().IsChecked(Tree().Root()));
  EXPECT_TRUE(HasStagingFolder());
}

TEST_F(WizardExportFlow, HomeReturnsToTheStartPageWithAFreshStagingFolder) {
  GoToCategories();
  flow_.Next();
  const std::wstring old = context_.stagingFolder;
  flow_.Finish();
  EXPECT_EQ(frame_.Page(), kStart);
  EXPECT_EQ(state_.pageIndex, 0);
  EXPECT_EQ(frame_.Buttons(), ButtonsAt(MigrationMode::kExport, 0));
  EXPECT_NE(context_.stagingFolder, old);
  EXPECT_TRUE(HasStagingFolder());
  EXPECT_EQ(context_.packageDescriptionPath, context_.stagingFolder + L"config.ini");
  EXPECT_EQ(frame_.finishText, L"");
}

TEST_F(WizardExportFlow, SecondRunAfterHomeWritesAnotherPackage) {
  GoToCategories();
  flow_.Next();
  flow_.Finish();
  frame_.saveAnswer = machine_->ScratchFolder() + L"second.ucex";
  GoToCategories();
  flow_.Next();
  EXPECT_TRUE(machine_->FileBytes(*frame_.saveAnswer).has_value());
  EXPECT_EQ(frame_.finishText,
            L"Your settings have been successfully exported to  " + *frame_.saveAnswer);
}

TEST_F(WizardExportFlow, NextBeyondTheFinishPageStaysThereAndRunsNothing) {
  GoToCategories();
  for (int i = 0; i < 3; ++i) flow_.Next();
  EXPECT_EQ(state_.pageIndex, 4);
  EXPECT_EQ(frame_.Page(), kFinish);
  EXPECT_FALSE(frame_.Buttons().finishEnabled);
  EXPECT_EQ(frame_.saveQuestions.size(), 1u);
  flow_.Finish();
  EXPECT_EQ(frame_.Page(), kFinish);
}

TEST_F(WizardExportFlow, ButtonsPressedDuringARunDoNothing) {
  GoToCategories();
  frame_.whileAsking = [&] {
    flow_.Next();
    flow_.Finish();
    flow_.Back();
    flow_.OneClickBackup();
  };
  flow_.Next();
  EXPECT_EQ(frame_.saveQuestions.size(), 1u);
  EXPECT_EQ(state_.pageIndex, 3);
  EXPECT_EQ(frame_.pages.size(), 4u);
}

TEST_F(WizardExportFlow, DeletedStagingFolderIsMadeAnewForTheRun) {
  GoToCategories();
  DeleteStagingFolder(context_, machine_->Ports());
  flow_.Next();
  EXPECT_EQ(frame_.Page(), kFinish);
  EXPECT_TRUE(machine_->FileBytes(*frame_.saveAnswer).has_value());
}

class WizardOnABrokenMachine : public WizardFixture {
 protected:
  WizardOnABrokenMachine() {
    const Machine ports = machine_->Ports();
    folders_.roaming = ports.folders->RoamingAppData();
    folders_.local = ports.folders->LocalAppData();
    folders_.temp = machine_->ScratchFolder();
  }

  void StartIn(MigrationMode mode) {
    ASSERT_TRUE(broken_.Open());
    broken_.Start();
    ChooseMode(state_, context_, mode);
  }

  FixedFolders folders_;
  WizardFlow broken_ = FlowOn(PortsWith(folders_));
};

TEST_F(WizardOnABrokenMachine, ExportWithoutATemporaryFolderIsToldAndStays) {
  folders_.temp.reset();
  StartIn(MigrationMode::kExport);
  broken_.Next();
  broken_.Next();
  broken_.Next();
  EXPECT_EQ(frame_.messages, (Texts{L"No folder can be made in the temporary path"}));
  EXPECT_EQ(frame_.Page(), kExportCategories);
  EXPECT_TRUE(frame_.saveQuestions.empty());
}

TEST_F(WizardOnABrokenMachine, ImportWithoutATemporaryFolderIsToldAndStays) {
  folders_.temp.reset();
  StartIn(MigrationMode::kImport);
  broken_.Next();
  EXPECT_EQ(frame_.messages.size(), 1u);
  EXPECT_EQ(frame_.Page(), kStart);
  EXPECT_EQ(state_.pageIndex, 0);
}

TEST_F(WizardOnABrokenMachine, UnknownUserFoldersAreToldBeforeAnythingIsListed) {
  folders_.roaming.reset();
  StartIn(MigrationMode::kExport);
  broken_.Next();
  broken_.Next();
  EXPECT_EQ(frame_.Page(), kVersion);
  EXPECT_EQ(state_.pageIndex, 1);

  broken_.Back();
  ChooseMode(state_, context_, MigrationMode::kReset);
  broken_.Next();
  EXPECT_EQ(frame_.Page(), kStart);
  EXPECT_EQ(state_.pageIndex, 0);
  const std::wstring text(Text(StringId::kFoldersMissing));
  EXPECT_EQ(frame_.messages, (Texts{text, text}));
  EXPECT_TRUE(frame_.trees.empty());
}

TEST_F(OpeningWizard, RemovesWhatAKilledWizardLeft) {
  FixedFolders folders;
  folders.temp = machine_->ScratchFolder();
  const std::wstring left = machine_->ScratchFolder() + L"FFEEDDCC-4455-6677-8899-AABBCCDDEEFF";
  machine_->PutFile(left + L"\\" + kRunFolderMark, "");
  machine_->PutFile(left + L"\\config.ini", "x");
  WizardFlow flow = FlowOn(PortsWith(folders));
  EXPECT_TRUE(flow.Open());
  EXPECT_FALSE(machine_->Ports().files->Exists(left));
  DeleteStagingFolder(context_, PortsWith(folders));
}

}  // namespace
}  // namespace carrovan
