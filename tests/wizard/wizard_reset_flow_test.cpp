#include "tests/wizard/wizard_fixture.h"
#include "wizard/wizard_flow.h"
#include "wizard/wizard_frame.h"

namespace carrovan {
namespace {

using Texts = std::vector<std::wstring>;
using enum WizardPage;

constexpr wchar_t kWarning[] =
    L"After the reset operation, the current settings cannot be restored. \n"
    L"It is recommended to export the current settings and then perform the reset.";
constexpr wchar_t kQuestion[] = L"You need to run Vantric at least once after reset.\nContinue?";

class WizardResetFlow : public WizardFixture {
 protected:
  void SetUp() override { OpenIn(MigrationMode::kReset); }

  RecordingTree& Tree() { return frame_.trees[kResetCategories]; }

  void GoToCategories() {
    flow_.Next();
    ASSERT_EQ(frame_.Page(), kResetCategories);
  }
};

TEST_F(WizardResetFlow, NextWarnsThenAsksThenResets) {
  flow_.Next();
  EXPECT_EQ(frame_.applicationMessages, (Texts{kWarning}));
  EXPECT_TRUE(frame_.questions.empty());
  flow_.Next();
  EXPECT_EQ(frame_.applicationMessages.size(), 1u);
  EXPECT_EQ(frame_.questions, (Texts{kQuestion}));
  EXPECT_EQ(Resets(), 1);
  EXPECT_EQ(Tree().ItemData(Tree().selected), static_cast<int>(SettingCategory::CosmeticThread));
  EXPECT_EQ(frame_.pages, (std::vector{kStart, kResetCategories, kFinish}));
  EXPECT_EQ(frame_.buttons[1], ButtonsAt(MigrationMode::kReset, 1));
  EXPECT_EQ(frame_.buttons[2], ButtonsAt(MigrationMode::kReset, 2));
}

TEST_F(WizardResetFlow, CategoriesAreThoseOfTheBrandWhateverTheRelease) {
  context_.installedVersions = {{L"27.0"}};
  machine_->PutKey(RegistryHive::kCurrentUser, LiveKeyOf(L"27.0"));
  GoToCategories();
  EXPECT_EQ(Tree().texts.size(), 14u);  // 3DBOM Configuration included
  EXPECT_TRUE(context_.localRoot.ends_with(L"\\27.0"));

  flow_.Back();
  context_.brandFlag = 0;
  flow_.Next();
  EXPECT_EQ(Tree().texts.size(), 13u);  // without Catalog Library
}

TEST_F(WizardResetFlow, RunningVersionIsResetWhateverWasWorkedOnBefore) {
  SelectTargetVersion(state_, context_, L"2025");
  GoToCategories();
  EXPECT_EQ(context_.productVersion, L"28.0");
  EXPECT_EQ(context_.humanReadableVersion, L"2026");
  EXPECT_TRUE(context_.localRoot.ends_with(L"\\28.0"));
  EXPECT_TRUE(context_.registryRoot.ends_with(L" 28.0"));
}

TEST_F(WizardResetFlow, UnpackedPackageIsGoneBeforeTheReset) {
  machine_->PutFile(context_.stagingFolder + L"Options\\General.reg", "of a package");
  GoToCategories();
  EXPECT_TRUE(HasStagingFolder());
  EXPECT_TRUE(IsStagingFolderFresh());
}

TEST_F(WizardResetFlow, VersionThatWasNeverRunIsToldOnEveryNext) {
  context_.installedVersions = {{L"27.0"}};
  flow_.Next();
  EXPECT_EQ(frame_.applicationMessages, (Texts{L"Please run Vantric at least once"}));
  EXPECT_EQ(state_.pageIndex, 0);
  EXPECT_EQ(frame_.pages.size(), 1u);

  context_.installedVersions = {{L"28.0"}};
  GoToCategories();
  context_.productVersion = L"27.0";
  flow_.Next();
  EXPECT_EQ(state_.pageIndex, 1);
  EXPECT_TRUE(frame_.questions.empty());
  EXPECT_EQ(Resets(), 0);
}

TEST_F(WizardResetFlow, AnswerNoResetsNothingAndLeavesTheIndexAheadOfThePage) {
  GoToCategories();
  frame_.yes = false;
  flow_.Next();
  EXPECT_EQ(Resets(), 0);
  EXPECT_EQ(state_.pageIndex, 2);
  EXPECT_EQ(frame_.Page(), kResetCategories);
  EXPECT_EQ(frame_.Buttons(), ButtonsAt(MigrationMode::kReset, 1));
}

TEST_F(WizardResetFlow, NextAfterNoShowsTheFinishPageWithoutAReset) {
  GoToCategories();
  frame_.yes = false;
  flow_.Next();
  flow_.Next();
  EXPECT_EQ(frame_.Page(), kFinish);
  EXPECT_EQ(state_.pageIndex, 2);
  EXPECT_EQ(frame_.questions.size(), 1u);
  EXPECT_EQ(Resets(), 0);
  EXPECT_EQ(frame_.finishText, L"");
}

TEST_F(WizardResetFlow, BackAfterNoLeadsToTheCategoriesAsTheyWere) {
  GoToCategories();
  Tree().SetChecked(SettingCategory::Options, false);
  frame_.yes = false;
  flow_.Next();
  flow_.Back();
  EXPECT_EQ(state_.pageIndex, 1);
  EXPECT_EQ(frame_.Page(), kResetCategories);
  EXPECT_FALSE(Tree().IsChecked(Tree().Root()));
  frame_.yes = true;
  flow_.Next();
  EXPECT_EQ(Resets(), 1);
}

TEST_F(WizardResetFlow, FinishAfterNoReturnsToTheStartPage) {
  GoToCategories();
  frame_.yes = false;
  flow_.Next();
  flow_.Finish();
  EXPECT_EQ(frame_.Page(), kStart);
  EXPECT_EQ(Resets(), 0);
}

TEST_F(WizardResetFlow, FinishOnTheCategoriesDoesWhatNextDoes) {
  GoToCategories();
  flow_.Finish();
  EXPECT_EQ(Resets(), 1);
  EXPECT_EQ(frame_.Page(), kFinish);
}

TEST_F(WizardResetFlow, DisplayWritesTheClampedIndexBack) {
  GoToCategories();
  flow_.Next();
  flow_.Next();
  EXPECT_EQ(state_.pageIndex, 2);
  EXPECT_EQ(frame_.Page(), kFinish);
  EXPECT_EQ(Resets(), 1);
}

TEST_F(WizardResetFlow, HomeReturnsToTheStartPageAndTheWarningComesAgain) {
  GoToCategories();
  flow_.Next();
  flow_.Finish();
  EXPECT_EQ(frame_.Page(), kStart);
  EXPECT_EQ(frame_.Buttons(), ButtonsAt(MigrationMode::kReset, 0));
  // The user has run the product, as the question has asked for.
  machine_->PutKey(RegistryHive::kCurrentUser, LiveKeyOf(L"28.0"));
  flow_.Next();
  EXPECT_EQ(frame_.applicationMessages, (Texts{kWarning, kWarning}));
}

TEST_F(WizardResetFlow, ButtonsPressedDuringTheQuestionDoNothing) {
  GoToCategories();
  frame_.whileAsking = [&] {
    flow_.Next();
    flow_.Finish();
  };
  flow_.Next();
  EXPECT_EQ(frame_.questions.size(), 1u);
  EXPECT_EQ(Resets(), 1);
}

class OneClickBackup : public WizardResetFlow {
 protected:
  void SetUp() override {
    WizardResetFlow::SetUp();
    GoToCategories();
  }
};

TEST_F(OneClickBackup, ExportsEveryOfferedCategoryAndStays) {
  machine_->PutFile(context_.localRoot + L"\\Customization\\keys.xml", "keys");
  Tree().SetAllChecked(false);
  flow_.OneClickBackup();
  EXPECT_EQ(frame_.Page(), kResetCategories);
  EXPECT_EQ(state_.pageIndex, 1);
  EXPECT_EQ(frame_.trees[kExportCategories].texts.size(), 14u);
  EXPECT_EQ(interpreter_.started.size(), 27u);
  const auto archive = machine_->Ports().archives->Open(*frame_.saveAnswer);
  ASSERT_NE(archive, nullptr);
  EXPECT_EQ(archive->Item(0)->name, L"config.ini");
  EXPECT_TRUE(archive->Item(1)->name.ends_with(L"\\Customization\\keys.xml"));
  EXPECT_FALSE(Tree().IsChecked(Tree().Root()));
}

TEST_F(OneClickBackup, MarksEveryCategoryInThePackage) {
  flow_.OneClickBackup();
  const Machine machine = machine_->Ports();
  const std::wstring description = machine_->ScratchFolder() + L"config.ini";
  {
    const auto archive = machine.archives->Open(*frame_.saveAnswer);
    ASSERT_NE(archive, nullptr);
    ASSERT_EQ(archive->Extract(0, description), ArchiveResult::kDone);
  }
  for (const CategoryRecord& record : CategoryTable()) {
    EXPECT_EQ(
        machine.profiles->ReadValue(L"Selected", std::wstring(Text(record.label)), description),
        L"1");
  }
}

TEST_F(OneClickBackup, RenewsTheStagingFolder) {
  const std::wstring old = context_.stagingFolder;
  flow_.OneClickBackup();
  EXPECT_NE(context_.stagingFolder, old);
  EXPECT_FALSE(machine_->Ports().files->Exists(old));
  EXPECT_TRUE(HasStagingFolder());
  EXPECT_EQ(context_.packageDescriptionPath, context_.stagingFolder + L"config.ini");
}

TEST_F(OneClickBackup, CancelledSaveDialogRenewsTheStagingFolderToo) {
  frame_.saveAnswer.reset();
  const std::wstring old = context_.stagingFolder;
  flow_.OneClickBackup();
  EXPECT_NE(context_.stagingFolder, old);
  EXPECT_TRUE(HasStagingFolder());
  EXPECT_EQ(frame_.Page(), kResetCategories);
  EXPECT_TRUE(frame_.messages.empty());
  EXPECT_TRUE(interpreter_.started.empty());
}

TEST_F(OneClickBackup, ResetAfterItGoesOn) {
  flow_.OneClickBackup();
  flow_.Next();
  EXPECT_EQ(Resets(), 1);
  EXPECT_EQ(frame_.Page(), kFinish);
}

TEST_F(OneClickBackup, SecondPressDuringTheRunDoesNothing) {
  frame_.whileAsking = [&] { flow_.OneClickBackup(); };
  flow_.OneClickBackup();
  EXPECT_EQ(frame_.saveQuestions.size(), 1u);
}

}  // namespace
}  // namespace carrovan
