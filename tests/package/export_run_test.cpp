#include "package/export_run.h"

#include <algorithm>

#include "environment/version_folders.h"
#include "tests/package/export_fixture.h"

namespace carrovan {
namespace {

using Names = std::vector<std::wstring>;
using enum SettingCategory;

class ExportRunTest : public ExportFixture {};

// The names a category's files have in the package: below "Local" or "Roaming".
std::wstring Below(const std::wstring& root, const std::wstring& path) {
  return path.substr(path.find(root + L"\\"));
}

TEST_F(ExportRunTest, FinishTextNamesThePackage) {
  Export();
  EXPECT_EQ(ExportFinishText(packagePath_),
            L"Your settings have been successfully exported to  " + PackagePath());
}

TEST_F(ExportRunTest, OptionsAloneHoldOneEntryPerKeyOfTheUser) {
  CheckOnly({Options});
  const auto report = Export();
  EXPECT_EQ(EntryNames(), (Names{L"config.ini", L"Options\\General.reg", L"Options\\SheetMetal.reg",
                                 L"Options\\Point Snap.reg"}));
  EXPECT_NE(Entries()[L"config.ini"].find("[Selected]\r\nOptions=1\r\n[Base]"), std::string::npos);
  EXPECT_TRUE(report.missingKeys.empty());
  EXPECT_TRUE(report.emptyCategories.empty());
  EXPECT_TRUE(context_.registerKeys.empty());
}

TEST_F(ExportRunTest, WholeUserWith26SubkeysGives27RegistryFiles) {
  for (const std::wstring_view subkey : OptionSubkeys()) {
    machine_->PutValue(RegistryHive::kCurrentUser, LiveKey(context_) + std::wstring(subkey),
                       MakeDwordValue(L"n", 1));
  }
  chosen_ = OfferedOnExport(context_);
  Export();
  const Names names = EntryNames();
  EXPECT_EQ(std::ranges::count_if(names, [](const auto& n) { return n.ends_with(L".reg"); }), 27);
  EXPECT_EQ(names.back(), L"Register\\" + context_.productName + L"2026.reg");
}

TEST_F(ExportRunTest, WizardPaceExportsEveryKeyInOrderWithItsPause) {
  chosen_ = OfferedOnExport(context_);
  RecordingInterpreter interpreter;
  const Machine machine = With<&Machine::registryTool>(Ports(), interpreter.tool);
  PacedRegistryTool tool(interpreter.tool, *machine.clock, RegistryToolPace::kFixedPause);
  RunObserver observer;
  RunExport({context_, machine, tool, observer}, chosen_, packagePath_);
  ASSERT_EQ(interpreter.started.size(), 27u);
  EXPECT_EQ(interpreter.waits, 0);
  EXPECT_EQ(machine_->clock.pauses,
            std::vector<std::chrono::milliseconds>(27, std::chrono::milliseconds(100)));
  const auto subkeys = OptionSubkeys();
  for (std::size_t i = 0; i < subkeys.size(); ++i) {
    EXPECT_EQ(interpreter.started[i],
              L"/C reg export \"" + RegistryRoot(context_) + std::wstring(subkeys[i]) + L"\" \"" +
                  context_.stagingFolder + std::wstring(subkeys[i].substr(1)) + L".reg\" /y");
  }
  EXPECT_EQ(interpreter.started.back(), L"/C reg export \"" + RegistryRoot(context_) + L"\" \"" +
                                            context_.stagingFolder + context_.productName +
                                            L"2026.reg\" /y");
}

TEST_F(ExportRunTest, FolderCategoriesAloneHoldNoRegistryFiles) {
  CheckOnly({ShortcutKey, InterfaceLayout});
  Export();
  EXPECT_EQ(EntryNames(),
            (Names{L"config.ini", Below(L"Roaming", Roaming(L"en-us\\Customization\\UI.xml")),
                   Below(L"Roaming", Roaming(L"zh-cn\\Customization\\UI.xml")),
                   Below(L"Local", Local(L"Customization\\keys.xml"))}));
  EXPECT_TRUE(context_.optionKeys.empty());
  EXPECT_TRUE(context_.registerKeys.empty());
}

TEST_F(ExportRunTest, SourcesAreDescriptionThenRoamingThenLocalThenRegistry) {
  CheckOnly({Options, Register, InterfaceLayout, DocumentTemplate, ShortcutKey, Draft2dSettings});
  Export();
  const Names& sources = context_.packageSources;
  ASSERT_EQ(sources.size(), 1u + 4 + 1 + 2 + 26 + 1);
  EXPECT_EQ(sources[0], context_.stagingFolder + L"config.ini");
  EXPECT_EQ(sources[1], Roaming(L"en-us\\Customization"));
  EXPECT_EQ(sources[2], Roaming(L"zh-cn\\Customization"));
  EXPECT_EQ(sources[3], Roaming(L"en-us\\Template"));
  EXPECT_EQ(sources[5], Local(L"Customization"));
  EXPECT_EQ(sources[6], context_.localFolder);
  EXPECT_EQ(sources[8], context_.stagingFolder + L"General.reg");
  EXPECT_EQ(sources.back(), context_.stagingFolder + context_.productName + L"2026.reg");
}

TEST_F(ExportRunTest, EachFolderCategoryBringsItsFilesAndItsMark) {
  const std::pair<SettingCategory, const wchar_t*> kCategories[] = {
      {InterfaceLayout, L"Customization\\UI.xml"},
      {DocumentTemplate, L"Template\\零件.tpl"},
      {Bom3dConfiguration, L"3DBOM\\bom.xml"},
      {PropertyTemplates, L"PropertyTemplates\\NewTemplates\\p.xml"},
      {CustomMaterials, L"materials\\steel.mat"},
      {CustomPartsLibrary, L"ToolBox\\bolt\\m8.prt"},
      {CatalogLibrary, L"FavoriteCatalog\\c.xml"},
      {SheetMetalLibrary, L"SheetMetal\\s.tab"},
      {CosmeticThread, L"CosmeticThread\\t.tab"},
  };
  for (const auto& [category, file] : kCategories) {
    CheckOnly({category});
    Export();
    const bool roaming = category == InterfaceLayout || category == DocumentTemplate;
    const std::wstring root = roaming ? L"Roaming" : L"Local";
    const std::wstring base = Below(root, roaming ? Roaming(L"") : Local(L""));
    EXPECT_EQ(EntryNames(),
              (Names{L"config.ini", base + L"en-us\\" + file, base + L"zh-cn\\" + file}));
    const std::wstring label(Text(FindCategory(static_cast<int>(category))->label));
    EXPECT_EQ(Ports().profiles->ReadValue(L"Selected", label, context_.packageDescriptionPath),
              L"1");
  }
}

TEST_F(ExportRunTest, DraftSettingsBringTheLocalFolderAndItsRoamingTwin) {
  CheckOnly({Draft2dSettings});
  Export();
  const std::wstring local = Below(L"Local", Draft(L"26.0\\"));
  EXPECT_EQ(EntryNames(), (Names{L"config.ini", local + L"draft.ini",
                                 L"Roaming" + local.substr(5) + L"draft.uik"}));
}

TEST_F(ExportRunTest, FilesArriveByteForByte) {
  const std::string bytes("\0\x01\xff\r\n\x1a", 6);
  machine_->PutFile(Local(L"en-us\\materials\\binary.dat"), bytes);
  machine_->PutFile(Local(L"en-us\\materials\\empty.dat"), "");
  CheckOnly({CustomMaterials});
  Export();
  auto entries = Entries();
  const std::wstring base = Below(L"Local", Local(L"en-us\\materials\\"));
  EXPECT_EQ(entries.at(base + L"binary.dat"), bytes);
  EXPECT_EQ(entries.at(base + L"empty.dat"), "");
}

TEST_F(ExportRunTest, RunAfterAnotherStartsFromFreshLists) {
  CheckOnly({ShortcutKey});
  Export();
  EXPECT_TRUE(context_.optionKeys.empty());

  CheckOnly({Options, CosmeticThread});
  Export();
  EXPECT_EQ(context_.optionKeys.size(), 26u);
  const std::string description = Entries()[L"config.ini"];
  EXPECT_EQ(description.find("Shortcut key"), std::string::npos);
  EXPECT_NE(description.find("Options=1\r\nCosmetic Thread=1\r\n[Base]"), std::string::npos);
}

TEST_F(ExportRunTest, ExistingPackageIsReplacedByTheNewOne) {
  machine_->PutFile(PackagePath(), "an older package");
  CheckOnly({ShortcutKey});
  const auto report = Export();
  EXPECT_EQ(report.package.outcome, ArchiveResult::kDone);
  EXPECT_EQ(EntryNames().size(), 2u);
}

TEST_F(ExportRunTest, ConfigFilesOfTheMachineStayBehind) {
  machine_->PutFile(Local(L"Customization\\user.config"), "machine");
  machine_->PutFile(Local(L"Customization\\a.config.bak"), "machine");
  machine_->PutFile(Local(L"Customization\\x.configs\\inner.xml"), "machine");
  machine_->PutFile(Local(L"Customization\\B.CONFIG"), "the rule knows lower case only");
  CheckOnly({ShortcutKey});
  const auto report = Export();
  EXPECT_EQ(EntryNames(), (Names{L"config.ini", Below(L"Local", Local(L"Customization\\B.CONFIG")),
                                 Below(L"Local", Local(L"Customization\\keys.xml"))}));
  EXPECT_TRUE(report.package.skipped.empty());
}

TEST_F(ExportRunTest, NamesOutsideTheCodePageAndLongPathsTravel) {
  const std::wstring deep = Local(L"Customization\\" + std::wstring(70, L'深') + L"\\" +
                                  std::wstring(100, L'y') + L"\\" + std::wstring(130, L'z'));
  const std::wstring emoji = L"\\keys \U0001F600.xml";
  machine_->PutFile(deep + emoji, "far away");
  CheckOnly({ShortcutKey});
  const auto report = Export();
  EXPECT_TRUE(report.package.skipped.empty());
  EXPECT_EQ(Entries()[Below(L"Local", deep + emoji)], "far away");
}

}  // namespace
}  // namespace carrovan
