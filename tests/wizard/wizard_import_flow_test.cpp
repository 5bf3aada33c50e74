#include <stdexcept>

#include "package/staging_folder.h"
#include "tests/wizard/wizard_fixture.h"
#include "wizard/wizard_flow.h"
#include "wizard/wizard_frame.h"

namespace carrovan {
namespace {

using Texts = std::vector<std::wstring>;
using Calls = std::vector<std::string>;
using enum WizardPage;

class WizardImportFlow : public WizardFixture {
 protected:
  void SetUp() override {
    OpenIn(MigrationMode::kImport);
    MakePackage(Package());
    state_.package.path = Package();
  }

  std::wstring Package() const { return machine_->ScratchFolder() + L"some.ucex"; }
  std::wstring LegacyPackage() const { return machine_->ScratchFolder() + L"old.UCX"; }

  void ChooseLegacyPackage() {
    MakeLegacyPackage(LegacyPackage());
    state_.package.path = LegacyPackage();
  }

  void GoToCategories() {
    flow_.Next();
    flow_.Next();
    ASSERT_EQ(frame_.Page(), kImportCategories);
  }
};

TEST_F(WizardImportFlow, NextLeadsThroughPathAndCategoriesToTheFinishPage) {
  flow_.Next();
  flow_.Next();
  flow_.Next();
  EXPECT_EQ(frame_.pages, (std::vector{kStart, kPath, kImportCategories, kFinish}));
  for (int place = 1; place <= 3; ++place) {
    EXPECT_EQ(frame_.buttons[static_cast<std::size_t>(place)],
              ButtonsAt(MigrationMode::kImport, place));
  }
  EXPECT_EQ(import_.calls, (Calls{"enter", "apply"}));
  RecordingTree& tree = frame_.trees[kImportCategories];
  EXPECT_EQ(tree.ItemData(tree.selected), static_cast<int>(SettingCategory::ShortcutKey));
}

TEST_F(WizardImportFlow, WithoutAPackageAsksForAFileAndStays) {
  state_.package.path.clear();
  flow_.Next();
  flow_.Next();
  EXPECT_EQ(frame_.messages, (Texts{L"Please select a file"}));
  EXPECT_EQ(frame_.Page(), kPath);
  EXPECT_EQ(state_.pageIndex, 1);
  EXPECT_TRUE(import_.calls.empty());
}

TEST_F(WizardImportFlow, PathPageThatIsShownAgainImportsIntoWhatItShows) {
  SelectVersion(context_, L"2025");
  frame_.selectedVersions[kPath] = L"2026";
  flow_.Next();
  EXPECT_EQ(context_.selectedVersion, L"2026");
  EXPECT_EQ(context_.productVersion, L"28.0");
  EXPECT_EQ(state_.package.targetInternalVersion, L"28.0");

  flow_.Back();
  frame_.selectedVersions[kPath] = L"2025";
  flow_.Next();
  EXPECT_EQ(context_.selectedVersion, L"2025");
  EXPECT_EQ(state_.package.targetInternalVersion, L"27.0");
}

TEST_F(WizardImportFlow, RefusedPackageStaysOnThePathPage) {
  MakePackage(Package(), "2027");
  flow_.Next();
  flow_.Next();
  EXPECT_EQ(state_.pageIndex, 1);
  EXPECT_EQ(frame_.Page(), kPath);
  EXPECT_EQ(frame_.applicationMessages, (Texts{L"Downgrading is not supported."}));

  MakePackage(Package());
  flow_.Next();
  EXPECT_EQ(frame_.Page(), kImportCategories);
  EXPECT_EQ(import_.calls, (Calls{"enter", "enter"}));
}

TEST_F(WizardImportFlow, PackageIsUnpackedIntoAFolderWithoutAnEarlierOne) {
  MakePackage(Package(), "2027");
  flow_.Next();
  import_.whileWorking = [&] {
    EXPECT_TRUE(HasStagingFolder());
    EXPECT_TRUE(IsStagingFolderFresh());
    EXPECT_EQ(context_.packageDescriptionPath, context_.stagingFolder + L"config.ini");
    machine_->PutFile(context_.stagingFolder + L"Local\\refused.xml", "refused");
  };
  flow_.Next();
  flow_.Next();
  EXPECT_EQ(import_.calls.size(), 2u);
}

TEST_F(WizardImportFlow, LegacyPackageKeepsWhatThePathPageUnpacked) {
  ChooseLegacyPackage();
  flow_.Next();
  state_.package.legacyXmlPath = context_.stagingFolder + L"Scene_UI.xml";
  machine_->PutFile(state_.package.legacyXmlPath, "<s/>");
  flow_.Next();
  EXPECT_EQ(import_.calls, Calls());
  EXPECT_EQ(frame_.Page(), kFinish);
  EXPECT_FALSE(frame_.finishText.empty());
}

TEST_F(WizardImportFlow, EndedProgramShowsNothingMore) {
  flow_.Next();
  FixedFolders folders;
  folders.roaming.reset();
  folders.temp = machine_->Ports().folders->TempPath();
  WizardFlow flow = FlowOn(PortsWith(folders));
  flow.Next();
  EXPECT_TRUE(frame_.ended);
  EXPECT_EQ(frame_.messages, (Texts{TextOf(RunRefusal::kFoldersMissing)}));
  EXPECT_EQ(frame_.pages.size(), 2u);
  EXPECT_EQ(frame_.finishText, L"");
}

TEST_F(WizardImportFlow, LegacyPackageGoesStraightToAFinishPageWithCloseAlone) {
  ChooseLegacyPackage();
  flow_.Next();
  flow_.Next();
  EXPECT_EQ(import_.calls, (Calls{"legacy"}));
  EXPECT_EQ(state_.pageIndex, 4);
  EXPECT_EQ(frame_.Page(), kFinish);
  EXPECT_EQ(frame_.Buttons().finishLabel, StringId::kHome);
  EXPECT_FALSE(frame_.Buttons().finishEnabled);
  EXPECT_FALSE(frame_.Buttons().nextVisible);
  EXPECT_TRUE(frame_.Buttons().cancelEnabled);
}

TEST_F(WizardImportFlow, NothingLeadsOnFromTheLegacyFinishPage) {
  ChooseLegacyPackage();
  flow_.Next();
  flow_.Next();
  flow_.Next();
  flow_.Finish();
  EXPECT_EQ(import_.calls, (Calls{"legacy"}));
  EXPECT_EQ(state_.pageIndex, 4);
  EXPECT_EQ(frame_.pages.size(), 3u);
}

// Whatever was clicked on the path page since that package was chosen.
TEST_F(WizardImportFlow, ExtensionOfTheChosenPathDecidesTheWay) {
  const std::pair<std::wstring, std::string> kWays[] = {{L"C:\\none\\old.ucx", "legacy"},
                                                        {L"C:\\none\\new.ucex", "enter"},
                                                        {L"C:\\none\\OLD.UCX", "legacy"},
                                                        {L"C:\\none\\old.ucx.zip", "enter"}};
  for (const auto& [path, way] : kWays) {
    import_.calls.clear();
    state_.pageIndex = 1;
    state_.package.path = path;
    flow_.Next();
    // It is also opened to see whether it is a package that cannot be looked into.
    EXPECT_EQ(import_.calls, (Calls{way, way}));
  }
}

TEST_F(WizardImportFlow, BackToThePathPageRenewsTheStagingFolder) {
  GoToCategories();
  const std::wstring old = context_.stagingFolder;
  machine_->PutFile(old + L"Local\\unpacked.xml", "unpacked");
  flow_.Back();
  EXPECT_EQ(frame_.Page(), kPath);
  EXPECT_NE(context_.stagingFolder, old);
  EXPECT_FALSE(machine_->FileBytes(old + L"Local\\unpacked.xml").has_value());
  EXPECT_TRUE(HasStagingFolder());
  EXPECT_EQ(context_.packageDescriptionPath, context_.stagingFolder + L"config.ini");
}

TEST_F(WizardImportFlow, BackToTheStartPageKeepsTheStagingFolder) {
  flow_.Next();
  const std::wstring staging = context_.stagingFolder;
  flow_.Back();
  EXPECT_EQ(frame_.Page(), kStart);
  EXPECT_EQ(context_.stagingFolder, staging);
  EXPECT_TRUE(HasStagingFolder());
}

TEST_F(WizardImportFlow, FinishOnTheCategoriesDoesWhatNextDoes) {
  GoToCategories();
  flow_.Finish();
  EXPECT_EQ(import_.calls, (Calls{"enter", "apply"}));
  EXPECT_EQ(frame_.Page(), kFinish);
}

TEST_F(WizardImportFlow, HomeReturnsToTheStartPageWithAStagingFolder) {
  GoToCategories();
  flow_.Next();
  EXPECT_FALSE(HasStagingFolder());
  flow_.Finish();
  EXPECT_EQ(frame_.Page(), kStart);
  EXPECT_EQ(state_.pageIndex, 0);
  EXPECT_TRUE(HasStagingFolder());
}

TEST_F(WizardImportFlow, ButtonsPressedDuringARunDoNothing) {
  GoToCategories();
  import_.whileWorking = [&] {
    flow_.Next();
    flow_.Finish();
    flow_.Back();
  };
  flow_.Next();
  EXPECT_EQ(import_.calls, (Calls{"enter", "apply"}));
  EXPECT_EQ(state_.pageIndex, 3);
}

TEST_F(WizardImportFlow, StepThatFailsWithAnErrorLeavesTheButtonsAlive) {
  GoToCategories();
  import_.whileWorking = [] { throw std::runtime_error("a merge's file-system error"); };
  EXPECT_THROW(flow_.Next(), std::runtime_error);
  import_.whileWorking = nullptr;
  flow_.Next();
  EXPECT_EQ(frame_.Page(), kFinish);
}

}  // namespace
}  // namespace carrovan
