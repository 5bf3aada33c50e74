#include "package/import_run.h"

#include <algorithm>

#include "environment/version_folders.h"
#include "package/category_import.h"
#include "package/package_opening.h"
#include "package/put_in_place.h"
#include "package/staging_folder.h"
#include "tests/package/import_run_fixture.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

using enum SettingCategory;
using Lines = std::vector<std::wstring>;

TEST_F(ImportRunTest, TickedFolderCategoryReplacesTheUsersFolder) {
  DescribeAllPlaces();
  std::vector<SettingCategory> all;
  for (const Place& place : kPlaces) all.push_back(place.category);
  Import(all);
  for (const Place& place : kPlaces) {
    EXPECT_EQ(Content(Own(place) + L"new.dat"), "from the package") << place.label;
    EXPECT_EQ(Content(Own(place) + L"old.dat"), "no file") << place.label;
  }
  EXPECT_TRUE(report_.IsComplete());
}

TEST_F(ImportRunTest, UntickedFolderCategoryLeavesTheUsersFolder) {
  DescribeAllPlaces();
  Import({});
  for (const Place& place : kPlaces) {
    EXPECT_EQ(Content(Own(place) + L"new.dat"), "no file") << place.label;
    EXPECT_EQ(Content(Own(place) + L"old.dat"), "the user's own") << place.label;
  }
}

TEST_F(ImportRunTest, EachCategoryIsAppliedForItself) {
  DescribeAllPlaces();
  Import({CustomMaterials});
  for (const Place& place : kPlaces) {
    const bool taken = place.category == CustomMaterials;
    EXPECT_EQ(Content(Own(place) + L"new.dat"), taken ? "from the package" : "no file")
        << place.label;
    EXPECT_EQ(Content(Own(place) + L"old.dat"), taken ? "no file" : "the user's own")
        << place.label;
  }
}

TEST_F(ImportRunTest, WithEverythingUntickedOnlyFilesOfNoCategoryAreLaidOver) {
  DescribeAllPlaces();
  entries_[L"Options\\General.reg"] = "never imported";
  entries_[PackageLocal(L"en-us\\Elsewhere\\x.dat")] = "nobody's";
  entries_[L"Local\\Other\\y.dat"] = "nobody's either";
  Describe({"Options", "Register", "Document Template"});
  Import({});
  EXPECT_EQ(Content(Local(L"en-us\\Elsewhere\\x.dat")), "nobody's");
  EXPECT_EQ(Content(state_.package.applicationDataRoot + L"Local\\Other\\y.dat"),
            "nobody's either");
  machine_->DeletePath(state_.package.applicationDataRoot + L"Local\\Other");
  EXPECT_EQ(Content(Roaming(L"en-us\\Template\\new.dat")), "no file");
}

TEST_F(ImportRunTest, AllThirteenUntickedChangeNothingOfTheirs) {
  DescribeEverything();
  Import({});
  EXPECT_EQ(Offered().size(), 13u);
  ExpectOnlyNobodysFiles();
  EXPECT_TRUE(report_.IsComplete());
}

// The root is no category, and what is above the leaves never acts.
TEST_F(ImportRunTest, CheckedRootAboveUncheckedLeavesTakesNothingIn) {
  DescribeEverything();
  ASSERT_EQ(Enter(), ImportFace::Entry::kReady);
  tree_.SetAllChecked(false);
  static_cast<CategoryTree&>(tree_).SetChecked(tree_.Root(), true);
  ImportFace(Run(), view_).Apply(tree_);
  ExpectOnlyNobodysFiles();
}

TEST_F(ImportRunTest, CheckedItemsOfOtherDataTakeNothingIn) {
  DescribeEverything();
  ASSERT_EQ(Enter(), ImportFace::Entry::kReady);
  tree_.SetAllChecked(false);
  for (const int data : {0, 1, 15, -1, 1000}) {
    const auto item = tree_.Append(tree_.Root(), L"of no category", data);
    static_cast<CategoryTree&>(tree_).SetChecked(item, true);
  }
  ImportFace(Run(), view_).Apply(tree_);
  ExpectOnlyNobodysFiles();
}

TEST_F(ImportRunTest, FilesOfOtherNamesStayBesideTheOverlay) {
  entries_[PackageLocal(L"Customization\\keys.xml")] = "<keys/>";
  machine_->PutFile(Local(L"other.dat"), "stays");
  Describe({"Shortcut key"});
  Import({ShortcutKey});
  EXPECT_EQ(Content(Local(L"other.dat")), "stays");
}

TEST_F(ImportRunTest, UntickedShortcutsRemoveThePackagesWholeLocalCustomization) {
  entries_[PackageLocal(L"Customization\\deep\\keys.xml")] = "<keys/>";
  Describe({"Shortcut key"});
  Import({});
  EXPECT_EQ(Content(Local(L"Customization\\deep\\keys.xml")), "no file");
}

TEST_F(ImportRunTest, UntickedInterfaceLayoutLeavesTheUsersFoldersOfAllLanguages) {
  for (const std::wstring language : {L"en-us\\", L"zh-cn\\"}) {
    entries_[PackageRoaming(language + L"Customization\\UI.xml")] = "<package/>";
    entries_[PackageRoaming(language + L"Customization\\deep\\new.dat")] = "from the package";
    machine_->PutFile(Roaming(language + L"Customization\\UI.xml"), "<own/>");
  }
  Describe({"Interface layout"});
  Import({});
  for (const std::wstring language : {L"en-us\\", L"zh-cn\\"}) {
    EXPECT_EQ(Content(Roaming(language + L"Customization\\UI.xml")), "<own/>");
    EXPECT_EQ(Content(Roaming(language + L"Customization\\deep\\new.dat")), "no file");
  }
}

// One shortcut of a command, as an accelerator file of this release has it.
class ShortcutImportTest : public ImportRunTest {
 protected:
  std::string Shortcut(const std::string& command) const {
    const std::string table = ToUtf8(context_.productName) + "28.0";
    return "<r><" + table + "><Accels-0><Command>" + command + "</Command><Ctrl>1</Ctrl><Key>" +
           command + "</Key></Accels-0><Count>1</Count></" + table + "></r>";
  }

  // Imports the package's shortcut and gives the merged document.
  std::string ImportShortcut() {
    entries_[PackageLocal(L"Customization\\keys.xml")] = Shortcut("11");
    machine_->PutFile(context_.defaultCustomizationFolder + L"\\keys.xml", Shortcut("22"));
    Describe({"Shortcut key"});
    Import({ShortcutKey});
    return Content(Local(L"Customization\\keys.xml"));
  }
};

TEST_F(ShortcutImportTest, FolderWithADocumentIsMergedWith) {
  machine_->PutFile(Local(L"Customization\\other.XML"), "<r/>");
  machine_->PutFile(Local(L"Customization\\keys.xml"), Shortcut("33"));
  const std::string merged = ImportShortcut();
  EXPECT_NE(merged.find("33"), std::string::npos) << merged;
  EXPECT_EQ(merged.find("22"), std::string::npos) << merged;
}

TEST_F(ShortcutImportTest, FolderWithoutADocumentIsReplacedByTheProductsOwn) {
  machine_->PutFile(Local(L"Customization\\readme.txt"), "no document");
  machine_->PutFile(Local(L"Customization\\folder.xml\\a.txt"), "no document");
  machine_->PutFile(Local(L"Customization\\deep\\keys.xml"), Shortcut("33"));
  const std::string merged = ImportShortcut();
  EXPECT_NE(merged.find("11"), std::string::npos) << merged;
  EXPECT_NE(merged.find("22"), std::string::npos) << merged;
}

TEST_F(ShortcutImportTest, PipeIsNoDocument) {
  machine_->PutFile(Local(L"Customization\\pipe.xml"), "");
  entries_[PackageLocal(L"Customization\\keys.xml")] = Shortcut("11");
  machine_->PutFile(context_.defaultCustomizationFolder + L"\\keys.xml", Shortcut("22"));
  Describe({"Shortcut key"});
  ASSERT_EQ(Enter(), ImportFace::Entry::kReady);
  SpecialFiles files(*ports_.files, L"pipe.xml");
  const Machine machine = With<&Machine::files>(ports_, files);
  ImportFace({context_, state_.package, machine, *tool_, *dom_, log_, observer_, report_}, view_)
      .Apply(tree_);
  EXPECT_NE(Content(Local(L"Customization\\keys.xml")).find("22"), std::string::npos);
}

TEST_F(ShortcutImportTest, MissingFolderIsReplacedByTheProductsOwn) {
  EXPECT_NE(ImportShortcut().find("22"), std::string::npos);
}

TEST_F(ImportRunTest, InterfaceLayoutIsMergedPerLanguage) {
  for (const std::wstring language : {L"en-us\\", L"zh-cn\\"}) {
    entries_[PackageRoaming(language + L"Customization\\UI.xml")] =
        "<r><Item ElementID=\"1\"/><Own ElementID=\"2\"/></r>";
    machine_->PutFile(Roaming(language + L"Customization\\UI.xml"),
                      "<r><Item ElementID=\"1\"/><New ElementID=\"3\"/></r>");
  }
  Describe({"Interface layout"});
  Import({InterfaceLayout});
  for (const std::wstring language : {L"en-us\\", L"zh-cn\\"}) {
    const std::string merged = Content(Roaming(language + L"Customization\\UI.xml"));
    EXPECT_NE(merged.find("<Own"), std::string::npos) << merged;
    EXPECT_NE(merged.find("<New"), std::string::npos) << merged;
  }
  EXPECT_FALSE(log_.lines.empty());
}

TEST_F(ImportRunTest, WithoutATargetFolderTheInterfaceLayoutIsAppliedAsItIs) {
  const std::string document = "<r><Own ElementID=\"2\"/></r>";
  entries_[PackageRoaming(L"en-us\\Customization\\UI.xml")] = document;
  Describe({"Interface layout"});
  Import({InterfaceLayout});
  EXPECT_EQ(Content(Roaming(L"en-us\\Customization\\UI.xml")), document);
}

TEST_F(ImportRunTest, MergeThatBreaksOffLeavesThatLanguageAloneAndGoesOn) {
  class FailingFiles : public ForwardingFiles {
   public:
    using ForwardingFiles::ForwardingFiles;
    SystemCode CreateFolder(const std::wstring& path) override {
      if (path.find(L"en-us\\Customization_merged_temp") != std::wstring::npos) {
        return kSystemDiskFull;
      }
      return ForwardingFiles::CreateFolder(path);
    }
  };
  for (const std::wstring language : {L"en-us\\", L"zh-cn\\"}) {
    entries_[PackageRoaming(language + L"Customization\\UI.xml")] = "<r><Own ElementID=\"2\"/></r>";
    machine_->PutFile(Roaming(language + L"Customization\\UI.xml"), "<r/>");
  }
  Describe({"Interface layout"});
  ASSERT_EQ(Enter(), ImportFace::Entry::kReady);
  FailingFiles files(*ports_.files);
  Machine failing = With<&Machine::files>(ports_, files);
  ImportRun run{context_, state_.package, failing, *tool_, *dom_, log_, observer_, report_};
  ImportFace(run, view_).Apply(tree_);
  EXPECT_EQ(Content(Roaming(L"en-us\\Customization\\UI.xml")), "<r/>");
  EXPECT_NE(Content(Roaming(L"zh-cn\\Customization\\UI.xml")).find("<Own"), std::string::npos);
  ASSERT_EQ(report_.problems.size(), 1u);
  EXPECT_TRUE(report_.problems[0].starts_with(L"Not merged: ")) << report_.problems[0].c_str();
}

TEST_F(ImportRunTest, RegistryFilesOfOptionsThenRegisterAreImported) {
  RecordingInterpreter interpreter;
  PacedRegistryTool tool(interpreter.tool, machine_->clock, RegistryToolPace::kFixedPause);
  entries_[L"Options\\General.reg"] = "a";
  entries_[L"Options\\deep\\x.reg"] = "in a subfolder";
  entries_[L"Register\\VANTRIC2026.reg"] = "b";
  Describe({"Options", "Register"});
  ASSERT_EQ(Enter(), ImportFace::Entry::kReady);
  const std::wstring staging = context_.stagingFolder;
  ImportFace({context_, state_.package, ports_, tool, *dom_, log_, observer_, report_}, view_)
      .Apply(tree_);
  EXPECT_EQ(interpreter.started,
            (Lines{L"/C reg import \"" + staging + L"Options\\General.reg\"",
                   L"/C reg import \"" + staging + L"Register\\VANTRIC2026.reg\""}));
  EXPECT_EQ(machine_->clock.pauses,
            (std::vector<std::chrono::milliseconds>{std::chrono::milliseconds(1000)}));
}

TEST_F(ImportRunTest, PipesAreNoRegistryFiles) {
  const std::wstring folder = machine_->ScratchFolder() + L"registry files";
  machine_->PutFile(folder + L"\\pipe.reg", "");
  machine_->PutFile(folder + L"\\a.reg", "a");
  const SpecialFiles files(*ports_.files, L"pipe.reg");
  RecordingInterpreter interpreter;
  PacedRegistryTool tool(interpreter.tool, machine_->clock, RegistryToolPace::kWaitForEnd);
  ImportRegistryFolder(folder, files, tool, report_);
  EXPECT_EQ(interpreter.started, (Lines{L"/C reg import \"" + folder + L"\\a.reg\""}));
}

TEST_F(ImportRunTest, RegistryFileWhoseNameTheInterpreterWouldChangeIsNotHandedToIt) {
  RecordingInterpreter interpreter;
  PacedRegistryTool tool(interpreter.tool, machine_->clock, RegistryToolPace::kFixedPause);
  entries_[L"Options\\%TEMP%.reg"] = "a";
  entries_[L"Options\\50% & ^more!.reg"] = "b";
  entries_[L"Options\\a & ^b! (c).reg"] = "c";
  Describe({"Options"});
  ASSERT_EQ(Enter(), ImportFace::Entry::kReady);
  const std::wstring folder = context_.stagingFolder + L"Options\\";
  ImportFace({context_, state_.package, ports_, tool, *dom_, log_, observer_, report_}, view_)
      .Apply(tree_);
  EXPECT_EQ(interpreter.started, (Lines{L"/C reg import \"" + folder + L"a & ^b! (c).reg\""}));
  const std::wstring why = L": its name holds a percent sign or a quote";
  EXPECT_EQ(report_.problems,
            (Lines{L"Not imported into the registry: " + folder + L"%TEMP%.reg" + why,
                   L"Not imported into the registry: " + folder + L"50% & ^more!.reg" + why}));
}

TEST_F(ImportRunTest, RegistryFileThatTheToolRefusesIsAProblem) {
  RecordingInterpreter interpreter;
  PacedRegistryTool tool(interpreter.tool, machine_->clock, RegistryToolPace::kWaitForEnd);
  entries_[L"Options\\General.reg"] = "a";
  Describe({"Options"});
  ASSERT_EQ(Enter(), ImportFace::Entry::kReady);
  const std::wstring file = context_.stagingFolder + L"Options\\General.reg";
  interpreter.succeeds = false;
  ImportFace({context_, state_.package, ports_, tool, *dom_, log_, observer_, report_}, view_)
      .Apply(tree_);
  EXPECT_EQ(report_.problems, (Lines{L"Not imported into the registry: " + file}));
  EXPECT_FALSE(view_.finishText.empty());
}

TEST_F(ImportRunTest, RegistryToolThatCannotStartIsAProblem) {
  RecordingInterpreter interpreter;
  PacedRegistryTool tool(interpreter.tool, machine_->clock, RegistryToolPace::kFixedPause);
  entries_[L"Register\\VANTRIC2026.reg"] = "b";
  Describe({"Register"});
  ASSERT_EQ(Enter(), ImportFace::Entry::kReady);
  interpreter.canStart = false;
  ImportFace({context_, state_.package, ports_, tool, *dom_, log_, observer_, report_}, view_)
      .Apply(tree_);
  EXPECT_EQ(report_.problems.size(), 1u);
  EXPECT_TRUE(view_.messages.empty());
}

TEST_F(ImportRunTest, UntickedRegistryCategoriesAreNotImported) {
  RecordingInterpreter interpreter;
  PacedRegistryTool tool(interpreter.tool, machine_->clock, RegistryToolPace::kWaitForEnd);
  entries_[L"Options\\General.reg"] = "a";
  entries_[L"Register\\VANTRIC2026.reg"] = "b";
  Describe({"Options", "Register"});
  ASSERT_EQ(Enter(), ImportFace::Entry::kReady);
  tree_.SetAllChecked(false);
  ImportFace({context_, state_.package, ports_, tool, *dom_, log_, observer_, report_}, view_)
      .Apply(tree_);
  EXPECT_TRUE(interpreter.started.empty());
  EXPECT_TRUE(machine_->clock.pauses.empty());
}

TEST_F(ImportRunTest, WalkVisitsEveryLeafAndEndsOnTheLast) {
  Describe({"Options", "Cosmetic Thread"});
  Import({});
  EXPECT_EQ(tree_.ItemData(tree_.selected), static_cast<int>(CosmeticThread));
}

TEST_F(ImportRunTest, OtherItemDataDoesNothing) {
  for (const int data : {0, 1, 15, -1}) {
    ApplyCategory(Run(), static_cast<SettingCategory>(data), true);
    ApplyCategory(Run(), static_cast<SettingCategory>(data), false);
  }
  EXPECT_TRUE(report_.IsComplete());
}

TEST_F(ImportRunTest, StagingFolderIsGoneAndTheFinishTextNamesTheTarget) {
  Describe({"Options"});
  Import({});
  EXPECT_FALSE(ports_.files->Exists(context_.stagingFolder));
  EXPECT_EQ(view_.finishText, L"Your settings have been successfully imported to  " +
                                  context_.productName + L" 2026.");
  EXPECT_TRUE(view_.messages.empty());
}

TEST_F(ImportRunTest, WhatCannotBePutInPlaceIsToldAndKept) {
  entries_[PackageLocal(L"en-us\\Elsewhere\\x.dat")] = "new";
  entries_[PackageLocal(L"en-us\\Elsewhere\\y.dat")] = "new";
  machine_->PutFile(Local(L"en-us\\Elsewhere\\x.dat"), "old");
  machine_->MakeReadOnly(Local(L"en-us\\Elsewhere\\x.dat"));
  Describe({"Options"});
  ASSERT_EQ(Enter(), ImportFace::Entry::kReady);
  const std::wstring staging = context_.stagingFolder;
  ImportFace(Run(), view_).Apply(tree_);
  const std::wstring refused = Local(L"en-us\\Elsewhere\\x.dat");
  EXPECT_EQ(view_.messages, (Lines{L"Failed to extract file: " + refused}));
  EXPECT_EQ(Content(refused), "old");
  EXPECT_EQ(Content(Local(L"en-us\\Elsewhere\\y.dat")), "new");
  EXPECT_EQ(Content(staging + PackageLocal(L"en-us\\Elsewhere\\x.dat")), "new");
  EXPECT_NE(context_.stagingFolder, staging);
  EXPECT_EQ(report_.unextracted.size(), 1u);
  machine_->DeletePath(staging.substr(0, staging.size() - 1));
}

// A package that is trusted by hand, or a reader that takes its names otherwise, may have put
// something there.
TEST_F(ImportRunTest, WhatLiesAtTheOverlaysNamesIsNotLaidOver) {
  entries_[PackageLocal(L"en-us\\Elsewhere\\x.dat")] = "new";
  Describe({"Options"});
  ASSERT_EQ(Enter(), ImportFace::Entry::kReady);
  const std::wstring root = state_.package.applicationDataRoot;
  const std::wstring archive = context_.stagingFolder + kChangedFilesArchive;
  machine_->PutFile(machine_->ScratchFolder() + L"gotcha", "gotcha");
  auto writer = ports_.archives->Create(archive, ArchivePurpose::kKeep);
  ASSERT_EQ(writer->Add(L"Roaming\\Startup\\a.bat", machine_->ScratchFolder() + L"gotcha"),
            ArchiveResult::kDone);
  ASSERT_EQ(writer->Close(), ArchiveResult::kDone);
  machine_->PutFile(archive + L".part\\x", "in the way of a new one");
  ImportFace(Run(), view_).Apply(tree_);
  EXPECT_EQ(Content(root + L"Roaming\\Startup\\a.bat"), "no file");
  EXPECT_EQ(Content(Local(L"en-us\\Elsewhere\\x.dat")), "new");
  EXPECT_TRUE(report_.IsComplete());
}

TEST_F(ImportRunTest, ArchiveThatWasNotJustWrittenIsNotUnpacked) {
  entries_[PackageLocal(L"en-us\\Elsewhere\\x.dat")] = "new";
  Describe({"Options"});
  ASSERT_EQ(Enter(), ImportFace::Entry::kReady);
  const std::wstring staging = context_.stagingFolder;
  const std::wstring root = state_.package.applicationDataRoot;
  machine_->PutFile(machine_->ScratchFolder() + L"gotcha", "gotcha");
  auto writer = ports_.archives->Create(staging + kChangedFilesArchive, ArchivePurpose::kKeep);
  ASSERT_EQ(writer->Add(L"Roaming\\Startup\\a.bat", machine_->ScratchFolder() + L"gotcha"),
            ArchiveResult::kDone);
  ASSERT_EQ(writer->Close(), ArchiveResult::kDone);
  KeepingFiles files(*ports_.files, staging + kChangedFilesArchive);
  const Machine machine = With<&Machine::files>(ports_, files);
  ImportFace({context_, state_.package, machine, *tool_, *dom_, log_, observer_, report_}, view_)
      .Apply(tree_);
  EXPECT_EQ(Content(root + L"Roaming\\Startup\\a.bat"), "no file");
  EXPECT_FALSE(report_.IsComplete());
  EXPECT_EQ(Content(staging + PackageLocal(L"en-us\\Elsewhere\\x.dat")), "new");
  EXPECT_FALSE(ports_.files->Exists(staging + kRunFolderMark)) << "no other run may remove it";
  machine_->DeletePath(staging.substr(0, staging.size() - 1));
}

TEST_F(ImportRunTest, OverlayThatCannotBeWrittenIsKept) {
  entries_[PackageLocal(L"en-us\\Elsewhere\\x.dat")] = "new";
  Describe({"Options"});
  ASSERT_EQ(Enter(), ImportFace::Entry::kReady);
  const std::wstring staging = context_.stagingFolder;
  FailingArchives archives(*ports_.archives, ArchiveResult::kDone, 1000);
  archives.closeResult = ArchiveResult::kDiskFull;
  const Machine machine = With<&Machine::archives>(ports_, archives);
  ImportFace({context_, state_.package, machine, *tool_, *dom_, log_, observer_, report_}, view_)
      .Apply(tree_);
  EXPECT_EQ(Content(Local(L"en-us\\Elsewhere\\x.dat")), "no file");
  EXPECT_EQ(Content(staging + PackageLocal(L"en-us\\Elsewhere\\x.dat")), "new");
  machine_->DeletePath(staging.substr(0, staging.size() - 1));
}

TEST_F(ImportRunTest, StagingFolderMayBeSweptUntilThePackageIsApplied) {
  Describe({"Options"});
  ASSERT_EQ(Enter(), ImportFace::Entry::kReady);
  const std::wstring mark = context_.stagingFolder + kRunFolderMark;
  EXPECT_TRUE(ports_.files->Exists(mark));
  class Looking : public RecordingInterpreter {
   public:
    std::function<void()> look;
    std::unique_ptr<RunningTool> Start(const std::wstring& parameters) override {
      look();
      return RecordingInterpreter::Start(parameters);
    }
  } interpreter;
  bool marked = true;
  interpreter.look = [&] { marked = ports_.files->Exists(mark); };
  machine_->PutFile(context_.stagingFolder + L"Options\\General.reg", "REGEDIT4\r\n");
  PacedRegistryTool tool(interpreter.tool, machine_->clock, RegistryToolPace::kWaitForEnd);
  tree_.SetChecked(tree_.Root(), true);
  ImportFace({context_, state_.package, ports_, tool, *dom_, log_, observer_, report_}, view_)
      .Apply(tree_);
  EXPECT_FALSE(interpreter.started.empty());
  EXPECT_FALSE(marked);
}

TEST_F(ImportRunTest, FileNamedAsAHalfOfTheProfileIsNotLaidOver) {
  entries_[L"Local"] = "a file";
  Describe({"Options"});
  Import({Options});
  EXPECT_EQ(Content(state_.package.applicationDataRoot + L"Options\\Local"), "no file");
  EXPECT_TRUE(report_.IsComplete());
}

TEST_F(ImportRunTest, WithoutAnApplicationDataFolderNothingIsLaidOver) {
  entries_[PackageLocal(L"en-us\\Elsewhere\\x.dat")] = "new";
  Describe({"Options"});
  ASSERT_EQ(Enter(), ImportFace::Entry::kReady);
  const std::wstring staging = context_.stagingFolder;
  state_.package.applicationDataRoot.clear();
  ImportFace(Run(), view_).Apply(tree_);
  EXPECT_EQ(Content(staging + PackageLocal(L"en-us\\Elsewhere\\x.dat")), "new");
  EXPECT_EQ(report_.problems.size(), 2u);
  machine_->DeletePath(staging.substr(0, staging.size() - 1));
}

TEST_F(ImportRunTest, KeptStagingFolderIsNobodysToDeleteEvenWithoutAFreshOne) {
  entries_[PackageLocal(L"en-us\\Elsewhere\\x.dat")] = "new";
  Describe({"Options"});
  ASSERT_EQ(Enter(), ImportFace::Entry::kReady);
  const std::wstring staging = context_.stagingFolder;
  state_.package.applicationDataRoot.clear();
  FixedGuids guids;
  guids.guid.reset();
  const Machine machine = With<&Machine::guids>(ports_, guids);
  ImportFace({context_, state_.package, machine, *tool_, *dom_, log_, observer_, report_}, view_)
      .Apply(tree_);
  DeleteStagingFolder(context_, ports_);
  EXPECT_EQ(Content(staging + PackageLocal(L"en-us\\Elsewhere\\x.dat")), "new");
  machine_->DeletePath(staging.substr(0, staging.size() - 1));
}

}  // namespace
}  // namespace carrovan
