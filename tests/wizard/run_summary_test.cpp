#include "wizard/run_summary.h"

#include <gtest/gtest.h>

namespace carrovan {
namespace {

using Texts = std::vector<std::wstring>;
using enum SettingCategory;

TEST(RunSummary, NamesEachItemOfAnExportThatWasNotStored) {
  ExportReport report;
  report.package.outcome = ArchiveResult::kDone;
  report.package.skipped = {{L"C:\\locked.dat", ArchiveResult::kSourceUnreadable}};
  report.package.misplaced = {{L"C:\\Users\\Local\\x", L"Local\\x"}};
  report.registryFileProblems = {{L"HKEY_CURRENT_USER\\cut", L"ends inside a value"}};
  report.missingKeys = {L"HKEY_CURRENT_USER\\missing", L"HKEY_CURRENT_USER\\cut"};
  report.emptyCategories = {CosmeticThread};
  EXPECT_EQ(SummaryOfExport(report, {Options, ShortcutKey, CosmeticThread},
                            {Options, CosmeticThread}, EnglishTexts()),
            (Texts{L"Options: exported", L"Shortcut key: left out",
                   L"Cosmetic Thread: there is nothing of it to export",
                   L"Not stored: C:\\locked.dat: " +
                       DescribeArchiveResult(ArchiveResult::kSourceUnreadable),
                   L"Not stored: C:\\Users\\Local\\x: it lies in the package as Local\\x, from "
                   L"where an import does not put it back",
                   L"Not stored: HKEY_CURRENT_USER\\cut: ends inside a value",
                   L"Not stored: HKEY_CURRENT_USER\\missing"}));
}

TEST(RunSummary, SaysNothingElseOfAnExportWithoutAPackage) {
  ExportReport report;
  report.refusal = L"nothing could be stored";
  EXPECT_EQ(SummaryOfExport(report, {Options}, {Options}, EnglishTexts()),
            (Texts{L"The package was not written: nothing could be stored"}));
}

TEST(RunSummary, NamesEachItemOfARunThatWasNotMergedDroppedOrPutInPlace) {
  GuardReport report;
  report.outcome.offered = {Options, ShortcutKey, CosmeticThread};
  report.outcome.chosen = {Options, CosmeticThread};
  report.outcome.report.emptied = {CosmeticThread};
  report.outcome.report.problems = {L"Not merged: C:\\ui.xml"};
  report.outcome.report.unextracted = {L"C:\\readonly.dat"};
  report.outcome.report.dropped = {{L"Options\\a.reg", L"HKEY_CURRENT_USER\\k", L"v", L"why"},
                                   {L"Options\\a.reg", L"HKEY_CURRENT_USER\\k", L"", L"why"}};
  EXPECT_EQ(
      SummaryOfRun(report, StringId::kCategoryImported, EnglishTexts()),
      (Texts{L"Options: imported", L"Shortcut key: left out",
             L"Cosmetic Thread: emptied, since the package holds nothing of it",
             L"Not merged: C:\\ui.xml", L"Failed to extract file: C:\\readonly.dat",
             L"Left out: HKEY_CURRENT_USER\\k\\v: why", L"Left out: HKEY_CURRENT_USER\\k: why"}));
}

TEST(RunSummary, CountsTheOptionsOfADocument) {
  GuardReport report;
  report.outcome.report.optionsSet = 0;
  EXPECT_EQ(SummaryOfRun(report, StringId::kCategoryImported, EnglishTexts()),
            (Texts{L"Options set: 0"}));
}

class TwoPlaces : public TextSource {
 public:
  std::wstring Text(StringId) const override { return L"100 %: %2 of %1, %3%"; }
};

TEST(TextSource, FillsThePlacesOfATextInAnyOrderAndLeavesTheRest) {
  EXPECT_EQ(TwoPlaces().Filled(StringId::kKeep, {L"%2", L"b"}), L"100 %: b of %2, %3%");
}

}  // namespace
}  // namespace carrovan
