#include "preview/preview_report.h"

#include <gtest/gtest.h>

#include "cli/preview_output.h"
#include "environment/version_folders.h"
#include "tests/cli/recording_console.h"
#include "tests/support/fakes.h"
#include "tests/support/test_machine.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr RegistryHive kUser = RegistryHive::kCurrentUser;
const std::wstring kLocal = L"C:\\Users\\u\\AppData\\Local\\Vantric\\VANTRIC\\28.0\\";
const std::wstring kLive = L"SOFTWARE\\Vantric\\VANTRIC 28.0";

class PreviewReportTest : public testing::Test {
 protected:
  PreviewReportTest() {
    context_.companyShortName = L"Vantric";
    context_.productName = L"VANTRIC";
    context_.productVersion = L"28.0";
    context_.humanReadableVersion = L"2026";
    context_.installLanguages = {L"en-us"};
  }

  PreviewReport Report() {
    const Machine own = machine_->Ports();
    const Machine machine = With<&Machine::folders>(own, folders_);
    EXPECT_TRUE(PrepareVersionFolders(context_, machine));
    return MakePreviewReport(changes_, run_, CategoryPlaces(context_, machine));
  }

  void Fill() {
    const FileImage before{FileKind::kFile, 3, 1};
    const FileImage after{FileKind::kFile, 4, 2};
    changes_.files = {{kLocal + L"Customization\\a.xml", Change::kReplaced, false, before, after},
                      {kLocal + L"Customization\\b.xml", Change::kReplaced, false, before, after},
                      {kLocal + L"en-us\\ToolBox", Change::kAdded, true, {}, {FileKind::kFolder}},
                      {kLocal + L"en-us\\ToolBox\\p", Change::kAdded, false, {}, after},
                      {L"C:\\elsewhere", Change::kRemoved, false, before, {}}};
    changes_.keys = {{kUser, kLive + L"\\General", Change::kAdded}};
    changes_.values = {
        {kUser, kLive + L"\\General", L"n", std::nullopt, MakeDwordValue(L"n", 1)},
        {kUser, kLive, L"", MakeStringValue(L"", L"x"), MakeStringValue(L"", L"y\"z")},
        {kUser, kLive, L"long", MakeStringValue(L"long", std::wstring(200, L'l')), std::nullopt}};
    run_.merged = {kLocal + L"customization\\A.XML"};
    run_.dropped = {{L"Options\\Color.reg", L"HKEY_CURRENT_USER\\" + kLive + L"\\Color", L"p",
                     L"names a path that does not exist here"}};
  }

  std::unique_ptr<TestMachine> machine_ = NewTestMachine();
  FixedFolders folders_;
  ProductContext context_;
  MachineChanges changes_;
  RunReport run_;
  RecordingConsole console_;
};

TEST_F(PreviewReportTest, EveryChangeIsThatOfItsCategory) {
  Fill();
  const PreviewReport report = Report();
  std::vector<std::wstring> labels;
  for (const PreviewedCategory& category : report.categories) labels.push_back(category.label);
  EXPECT_EQ(labels, (std::vector<std::wstring>{L"Options", L"Register", L"Shortcut key",
                                               L"Custom Parts Library", L"Other"}));
  EXPECT_EQ(report.categories[0].summary, (PreviewSummary{.valuesAdded = 1, .valuesDropped = 1}));
  EXPECT_EQ(report.categories[0].keys.size(), 1u);
  EXPECT_EQ(report.categories[1].summary, (PreviewSummary{.valuesChanged = 1, .valuesRemoved = 1}));
  EXPECT_EQ(report.categories[2].summary, (PreviewSummary{.filesReplaced = 1, .filesMerged = 1}));
  EXPECT_EQ(report.categories[3].summary, (PreviewSummary{.filesAdded = 1}));
  EXPECT_EQ(report.categories[3].files.size(), 2u);
  EXPECT_EQ(report.categories[4].summary, (PreviewSummary{.filesRemoved = 1}));
}

TEST_F(PreviewReportTest, IsPrintedAsOneLineForEachCategory) {
  Fill();
  PrintPreview(Session(console_), Report(), false);
  EXPECT_EQ(
      console_.out,
      L"Options: 1 value added, 1 value dropped\n"
      L"Register: 1 value changed, 1 value removed\n"
      L"Shortcut key: 1 file replaced, 1 file merged\n"
      L"Custom Parts Library: 1 file added\n"
      L"Other: 1 file removed\n"
      L"Nothing was changed; a run would do the above, of which --details lists each item.\n");
}

TEST_F(PreviewReportTest, DetailsArePrintedLineByLineBehindTheSummary) {
  Fill();
  PrintPreview(Session(console_), Report(), true);
  EXPECT_TRUE(Contains(console_.out, L"\nOther: 1 file removed\n\nOptions\n  key added"));
  const std::wstring key = L"HKEY_CURRENT_USER\\" + kLive;
  for (const std::wstring& line :
       {std::wstring(L"Options: 1 value added, 1 value dropped\n"),
        L"  key added     " + key + L"\\General\n",
        L"  value added   " + key + L"\\General  n = dword:00000001\n",
        L"  value changed " + key + L"  (default) from \"x\" to \"y\\\"z\"\n",
        L"  value removed " + key + L"  long = \"" + std::wstring(79, L'l') +
            L"... (202 characters)\n",
        L"  value dropped " + key + L"\\Color  p: names a path that does not exist here\n",
        L"  merged   " + kLocal + L"Customization\\a.xml\n",
        L"  replaced " + kLocal + L"Customization\\b.xml\n",
        L"  added    " + kLocal + L"en-us\\ToolBox\\\n",
        L"  added    " + kLocal + L"en-us\\ToolBox\\p (4 bytes)\n",
        std::wstring(L"  removed  C:\\elsewhere\n")}) {
    EXPECT_TRUE(Contains(console_.out, line)) << ToUtf8(line) << "in\n" << ToUtf8(console_.out);
  }
  EXPECT_TRUE(console_.out.ends_with(L"Nothing was changed; a run would do the above.\n"));
}

TEST_F(PreviewReportTest, SaysThatThereIsNothingToDo) {
  PrintPreview(Session(console_), Report(), true);
  EXPECT_EQ(console_.out, L"Nothing was changed; a run would change nothing.\n");
}

TEST_F(PreviewReportTest, IsPrintedAsADocument) {
  Fill();
  PrintPreviewJson(Session(console_), Report(), {{"verb", "import"}});
  for (const wchar_t* part :
       {L"\"label\": \"Custom Parts Library\"", L"\"filesMerged\": 1", L"\"change\": \"merged\"",
        L"\"sizeBefore\": 3", L"\"sizeAfter\": null", L"\"folder\": true",
        L"\"before\": \"\\\"x\\\"\"", L"\"after\": \"dword:00000001\"", L"\"type\": 4",
        L"\"file\": \"Options\\\\Color.reg\"", L"\"why\": \"names a path"}) {
    EXPECT_TRUE(Contains(console_.out, part)) << ToUtf8(part) << " in\n" << ToUtf8(console_.out);
  }
}

}  // namespace
}  // namespace carrovan
