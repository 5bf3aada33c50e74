#include <gtest/gtest.h>

#include <algorithm>

#include "cli/command_line.h"
#include "platform/sandbox/sandbox_machine.h"
#include "tests/cli/recording_console.h"
#include "tests/support/temporary_folder.h"
#include "tests/wizard/wizard_fixture.h"
#include "text/text.h"
#include "wizard/category_tree.h"
#include "wizard/wizard_flow.h"

namespace carrovan {
namespace {

using Labels = std::vector<std::wstring>;
using Entries = std::vector<std::pair<std::wstring, std::string>>;  // name and content, as stored

constexpr char kProductIni[] =
    "[Product]\r\nCompanyShortName=Vantric\r\nProductName=VANTRIC\r\nProductVersion=28.0\r\n"
    "HumanReadableVersion=2026\r\nStartupFolder=C:\\Program Files\\Vantric\\Bin\r\n"
    "UserName=Test User\r\n";

// A sandbox on which releases 2025 and 2026 have been used, exported by the wizard's flow and by
// the command line.
class WizardAndCommandLine : public testing::Test {
 protected:
  WizardAndCommandLine() {
    PutHostFile(folder_.Path() / "product.ini", kProductIni);
    for (const char* language : {"en-us", "zh-cn"}) {
      std::filesystem::create_directories(folder_.Path() / "C/Program Files/AppData" / language);
    }
    for (const char* version : {"27.0", "28.0"}) PutProfile(version);
    MachineOrReason opened = SandboxMachine::Open(folder_.Text());
    machine_.reset(static_cast<SandboxMachine*>(opened.object.release()));
    for (const wchar_t* version : {L"27.0", L"28.0"}) PutKeys(version);
  }

  void PutProfile(const std::string& version) {
    const auto profile = folder_.Path() / "C/Users/Test User/AppData";
    const auto roaming = profile / "Roaming/Vantric/VANTRIC" / version;
    const auto local = profile / "Local/Vantric/VANTRIC" / version;
    for (const char* language : {"en-us", "zh-cn"}) {
      PutHostFile(roaming / language / "Customization/UI.xml", version + " ribbon");
      PutHostFile(roaming / language / "Template/part.tpl", version + " template");
      PutHostFile(local / language / "3DBOM/bom.xml", version + " bom");
      PutHostFile(local / language / "materials/steel.mat", version + " steel");
    }
    PutHostFile(local / "Customization/keys.xml", version + " keys");
    for (const char* year : {"2024", "2026"}) {
      const std::string product = std::string("ORMA/ORMA CAD TVRN-INT-VANTRIC ") + year + " (x64)";
      PutHostFile(profile / "Local" / product / "draft.ini", year);
    }
  }

  void PutKeys(const std::wstring& version) {
    ASSERT_TRUE(machine_->Registry().Change(RegistryHive::kLocalMachine, [&](RegistryKey& root) {
      root.Make(L"SOFTWARE\\Vantric\\VANTRIC\\" + version);
    }));
    ASSERT_TRUE(machine_->Registry().Change(RegistryHive::kCurrentUser, [&](RegistryKey& root) {
      RegistryKey& live = root.Make(L"SOFTWARE\\Vantric\\VANTRIC " + version);
      live.Make(L"General").SetValue(MakeStringValue(L"release", version));
      live.Make(L"Point Snap").SetValue(MakeDwordValue(L"on", 1));
    }));
  }

  // A person's way through the wizard; no labels mean that everything stays ticked.
  void ExportWithWizard(const std::wstring& year, const Labels& labels) {
    const Machine machine = With<&Machine::clock>(machine_->Ports(), clock_);
    ProductContext context;
    WizardState state;
    SilentLog log;
    const auto packages = OpenSandboxFiles(folder_.Text()).object;
    frame_.saveAnswer = L"C:\\wizard.ucex";
    WizardFlow flow({context, state, machine, *packages, EnglishTexts(), log, frame_});
    ASSERT_TRUE(flow.Open());
    ListInstalledYears(context);
    flow.Start();
    ChooseMode(state, context, MigrationMode::kExport);
    flow.Next();
    SelectVersion(context, year);
    flow.Next();
    if (!labels.empty()) TickOnly(labels);
    flow.Next();
    ASSERT_EQ(frame_.Page(), WizardPage::kFinish);
  }

  void TickOnly(const Labels& labels) {
    RecordingTree& tree = frame_.trees[WizardPage::kExportCategories];
    ClickBox(tree, tree.Root());
    for (const auto& [item, text] : tree.texts) {
      if (std::find(labels.begin(), labels.end(), text) != labels.end()) ClickBox(tree, item);
    }
  }

  static void ClickBox(RecordingTree& tree, CategoryTree::Item item) {
    ClickCategory(tree, item, true);
    tree.SetChecked(item, !tree.IsChecked(item));
  }

  void ExportWithCommandLine(const std::wstring& year, const Labels& labels) {
    std::vector<std::wstring> arguments{L"--root", folder_.Text(), L"export",          L"--version",
                                        year,      L"--output",    L"C:\\command.ucex"};
    if (labels.empty()) arguments.emplace_back(L"--all");
    for (const std::wstring& label : labels) {
      arguments.emplace_back(L"--category");
      arguments.push_back(label);
    }
    RecordingConsole console;
    const ExitStatus status = RunCommandLine(arguments, console);
    ASSERT_TRUE(status == ExitStatus::kDone || status == ExitStatus::kPartly)
        << ToUtf8(console.err);
  }

  Entries EntriesOf(const std::wstring& package) {
    Entries entries;
    const auto archive = machine_->Ports().archives->Open(package);
    if (!archive) return entries;
    for (std::size_t i = 0; const auto item = archive->Item(i); ++i) {
      EXPECT_EQ(archive->Extract(i, L"C:\\entry"), ArchiveResult::kDone);
      std::string bytes;
      EXPECT_EQ(machine_->Ports().files->ReadBytes(L"C:\\entry", bytes), kSystemOk);
      entries.emplace_back(item->name, bytes);
    }
    return entries;
  }

  TemporaryFolder folder_;
  std::unique_ptr<SandboxMachine> machine_;
  RecordingClock clock_;
  RecordingFrame frame_;
};

TEST_F(WizardAndCommandLine, WriteTheSamePackageForTheSameChoice) {
  const std::pair<std::wstring, Labels> kChoices[] = {
      {L"2026", {}},
      {L"2025", {}},
      {L"2026", {L"Options"}},
      {L"2025", {L"Options", L"Shortcut key", L"Custom materials"}},
      {L"2026", {L"Register", L"3DBOM Configuration", L"2D Draft Settings"}},
  };
  for (const auto& [year, labels] : kChoices) {
    SCOPED_TRACE(ToUtf8(year) + " with " + std::to_string(labels.size()) + " labels");
    ExportWithWizard(year, labels);
    ExportWithCommandLine(year, labels);
    const Entries fromWizard = EntriesOf(L"C:\\wizard.ucex");
    EXPECT_GT(fromWizard.size(), 1u);
    EXPECT_EQ(fromWizard, EntriesOf(L"C:\\command.ucex"));
  }
}

TEST_F(WizardAndCommandLine, LeaveNoStagingFolderBehind) {
  const std::wstring temp = *machine_->Ports().folders->TempPath();
  ExportWithWizard(L"2026", {});
  EXPECT_TRUE(ListFolder(*machine_->Ports().files, temp).empty());
  ExportWithCommandLine(L"2026", {});
  EXPECT_TRUE(ListFolder(*machine_->Ports().files, temp).empty());
}

}  // namespace
}  // namespace carrovan
