#include "wizard/wizard_frame.h"

#include <gtest/gtest.h>

namespace carrovan {
namespace {

using enum WizardPage;
using enum MigrationMode;

TEST(WizardPages, EachModeHasItsSequence) {
  const std::pair<MigrationMode, std::vector<WizardPage>> kSequences[] = {
      {kNone, {kStart}},
      {kExport, {kStart, kVersion, kExportCategories, WizardPage::kFinish}},
      {kImport, {kStart, kPath, kImportCategories, WizardPage::kFinish}},
      {kReset, {kStart, kResetCategories, WizardPage::kFinish}},
  };
  for (const auto& [mode, pages] : kSequences) {
    EXPECT_EQ(LastPageIndex(mode), static_cast<int>(pages.size()) - 1);
    for (std::size_t i = 0; i < pages.size(); ++i) {
      EXPECT_EQ(PageAt(mode, static_cast<int>(i)), pages[i]) << static_cast<int>(mode) << " " << i;
    }
  }
}

TEST(WizardPages, IndexOutsideTheSequenceShowsTheNearestPage) {
  for (const MigrationMode mode : {kExport, kImport, kReset}) {
    EXPECT_EQ(PageAt(mode, -1), kStart);
    EXPECT_EQ(PageAt(mode, 4), WizardPage::kFinish);
    EXPECT_EQ(PageAt(mode, 100), WizardPage::kFinish);
  }
}

struct Row {
  MigrationMode mode;
  int pageIndex;
  bool back;  // enabled and visible
  bool next;
  bool finish;
};

TEST(WizardButtonRules, BackNextAndFinishFollowTheIndex) {
  const Row kRows[] = {
      {kNone, 0, false, true, false},    {kExport, 0, false, true, false},
      {kExport, 1, true, true, false},   {kExport, 2, true, false, true},
      {kExport, 3, false, false, true},  {kExport, 4, false, false, false},
      {kImport, 0, false, true, false},  {kImport, 1, true, true, false},
      {kImport, 2, true, false, true},   {kImport, 3, false, false, true},
      {kImport, 4, false, false, false}, {kReset, 0, false, true, false},
      {kReset, 1, true, true, true},     {kReset, 2, false, false, true},
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(testing::Message() << static_cast<int>(row.mode) << " at " << row.pageIndex);
    const WizardButtons buttons = ButtonsAt(row.mode, row.pageIndex);
    EXPECT_EQ(buttons.backEnabled, row.back);
    EXPECT_EQ(buttons.backVisible, row.back);
    EXPECT_EQ(buttons.nextEnabled, row.next);
    EXPECT_EQ(buttons.finishEnabled, row.finish);
    EXPECT_TRUE(buttons.cancelEnabled);
  }
}

TEST(WizardButtonRules, StartPageReadsFinishAndCloseFromTheOpeningOn) {
  for (const MigrationMode mode : {kNone, kExport, kImport, kReset}) {
    const WizardButtons buttons = ButtonsAt(mode, 0);
    EXPECT_EQ(buttons.finishLabel, StringId::kFinish);
    EXPECT_EQ(buttons.cancelLabel, StringId::kClose);
    EXPECT_TRUE(buttons.nextVisible);
  }
}

TEST(WizardButtonRules, FinishPageReadsHomeAndCloseWithoutNext) {
  const std::pair<MigrationMode, int> kPlaces[] = {
      {kExport, 3}, {kExport, 4}, {kImport, 3}, {kImport, 4}, {kReset, 2}};
  for (const auto& [mode, place] : kPlaces) {
    const WizardButtons buttons = ButtonsAt(mode, place);
    EXPECT_EQ(buttons.finishLabel, StringId::kHome);
    EXPECT_EQ(buttons.cancelLabel, StringId::kClose);
    EXPECT_FALSE(buttons.nextVisible);
  }
}

TEST(WizardButtonRules, PagesBetweenLeaveTheLabels) {
  const std::pair<MigrationMode, int> kPlaces[] = {
      {kExport, 1}, {kExport, 2}, {kImport, 1}, {kImport, 2}, {kReset, 1}};
  for (const auto& [mode, place] : kPlaces) {
    const WizardButtons buttons = ButtonsAt(mode, place);
    EXPECT_EQ(buttons.finishLabel, std::nullopt);
    EXPECT_EQ(buttons.cancelLabel, std::nullopt);
    EXPECT_TRUE(buttons.nextVisible);
  }
}

}  // namespace
}  // namespace carrovan
