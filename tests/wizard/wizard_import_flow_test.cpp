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
    state_.package.path = L"C:\\some.ucex";
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
  EXPECT_EQ(import_.treeOfCall, &frame_.trees[kImportCategories]);
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
  import_.entry = ImportSteps::Entry::kRefused;
  flow_.Next();
  flow_.Next();
  EXPECT_EQ(state_.pageIndex, 1);
  EXPECT_EQ(frame_.Page(), kPath);

  import_.entry = ImportSteps::Entry::kReady;
  flow_.Next();
  EXPECT_EQ(frame_.Page(), kImportCategories);
  EXPECT_EQ(import_.calls, (Calls{"enter", "enter"}));
}

TEST_F(WizardImportFlow, PackageIsUnpackedIntoAFolderWithoutAnEarlierOne) {
  import_.entry = ImportSteps::Entry::kRefused;
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
  state_.package.path = L"C:\\old.UCX";
  flow_.Next();
  machine_->PutFile(context_.stagingFolder + L"legacy.xml", "legacy");
  import_.whileWorking = [&] {
    EXPECT_EQ(machine_->FileBytes(context_.stagingFolder + L"legacy.xml"), "legacy");
  };
  flow_.Next();
  EXPECT_EQ(import_.calls, (Calls{"legacy"}));
}

TEST_F(WizardImportFlow, EndedProgramShowsNothingMore) {
  import_.entry = ImportSteps::Entry::kEnded;
  flow_.Next();
  flow_.Next();
  EXPECT_EQ(frame_.pages.size(), 2u);
  EXPECT_EQ(import_.calls, (Calls{"enter"}));
}

TEST_F(WizardImportFlow, LegacyPackageGoesStraightToAFinishPageWithCloseAlone) {
  state_.package.path = L"C:\\old.UCX";
  flow_.Next();
  flow_.Next();
  EXPECT_EQ(import_.calls, (Calls{"legacy"}));
  EXPECT_EQ(state_.pageIndex, 4);
  EXPECT_EQ(frame_.Page(), kFinish);
  EXPECT_EQ(frame_.Buttons().finishLabel, L"Home");
  EXPECT_FALSE(frame_.Buttons().finishEnabled);
  EXPECT_FALSE(frame_.Buttons().nextVisible);
  EXPECT_TRUE(frame_.Buttons().cancelEnabled);
}

TEST_F(WizardImportFlow, NothingLeadsOnFromTheLegacyFinishPage) {
  state_.package.path = L"C:\\old.UCX";
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
  const std::pair<std::wstring, std::string> kWays[] = {{L"C:\\old.ucx", "legacy"},
                                                        {L"C:\\new.ucex", "enter"},
                                                        {L"C:\\OLD.UCX", "legacy"},
                                                        {L"C:\\old.ucx.zip", "enter"}};
  for (const auto& [path, way] : kWays) {
    import_.calls.clear();
    state_.pageIndex = 1;
    state_.package.path = path;
    flow_.Next();
    EXPECT_EQ(import_.calls, Calls{way}) << way;
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
  import_.whileWorking = [&] { DeleteStagingFolder(context_, machine_->Ports()); };
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
