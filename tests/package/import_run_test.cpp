#include "package/import_run.h"

#include <algorithm>

#include "package/category_import.h"
#include "package/drafting_import.h"
#include "package/overlay.h"
#include "package/package_opening.h"
#include "package/run_folder.h"
#include "package/staging_folder.h"
#include "tests/package/import_fixture.h"

namespace carrovan {
namespace {

using enum SettingCategory;
using Lines = std::vector<std::wstring>;

class ImportRunTest : public ImportFixture {
 protected:
  // Every category that lives in one kind of place, with its file in the package and the user's
  // own.
  struct Place {
    SettingCategory category;
    std::string label;
    bool roaming;
    std::wstring folder;
  };
  const std::vector<Place> kPlaces = {
      {DocumentTemplate, "Document Template", true, L"en-us\\Template\\"},
      {Bom3dConfiguration, "3DBOM Configuration", false, L"en-us\\3DBOM\\"},
      {PropertyTemplates, "Property Templates", false, L"en-us\\PropertyTemplates\\NewTemplates\\"},
      {CustomMaterials, "Custom materials", false, L"en-us\\materials\\"},
      {CustomPartsLibrary, "Custom Parts Library", false, L"en-us\\ToolBox\\"},
      {CatalogLibrary, "Catalog Library", false, L"en-us\\FavoriteCatalog\\"},
      {SheetMetalLibrary, "Sheet Metal Library", false, L"en-us\\SheetMetal\\"},
      {CosmeticThread, "Cosmetic Thread", false, L"en-us\\CosmeticThread\\"},
  };

  void DescribeAllPlaces() {
    std::vector<std::string> labels;
    for (const Place& place : kPlaces) {
      labels.push_back(place.label);
      const std::wstring below = place.folder + L"new.dat";
      entries_[place.roaming ? PackageRoaming(below) : PackageLocal(below)] = "from the package";
      machine_->PutFile(Own(place) + L"old.dat", "the user's own");
    }
    Describe(labels);
  }

  std::wstring Own(const Place& place) const {
    return place.roaming ? Roaming(place.folder) : Local(place.folder);
  }
};

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
  ASSERT_EQ(Enter(), ImportSteps::Entry::kReady);
  FailingFiles files(ports_.files);
  Machine failing = WithFiles(ports_, files);
  ImportRun run{context_, state_.package, failing, *tool_, *dom_, log_, view_, report_};
  PackageImport(run).Apply(tree_);
  EXPECT_EQ(Content(Roaming(L"en-us\\Customization\\UI.xml")), "<r/>");
  EXPECT_NE(Content(Roaming(L"zh-cn\\Customization\\UI.xml")).find("<Own"), std::string::npos);
  ASSERT_EQ(report_.problems.size(), 1u);
  EXPECT_TRUE(report_.problems[0].starts_with(L"Not merged: ")) << report_.problems[0].c_str();
}

TEST_F(ImportRunTest, RegistryFilesOfOptionsThenRegisterAreImported) {
  RecordingInterpreter interpreter;
  RegistryTool tool(interpreter, machine_->clock, RegistryToolPace::kFixedPause);
  entries_[L"Options\\General.reg"] = "a";
  entries_[L"Options\\deep\\x.reg"] = "in a subfolder";
  entries_[L"Register\\VANTRIC2026.reg"] = "b";
  Describe({"Options", "Register"});
  ASSERT_EQ(Enter(), ImportSteps::Entry::kReady);
  const std::wstring staging = context_.stagingFolder;
  PackageImport({context_, state_.package, ports_, tool, *dom_, log_, view_, report_}).Apply(tree_);
  EXPECT_EQ(interpreter.started,
            (Lines{L"/C reg import \"" + staging + L"Options\\General.reg\"",
                   L"/C reg import \"" + staging + L"Register\\VANTRIC2026.reg\""}));
  EXPECT_EQ(machine_->clock.pauses,
            (std::vector<std::chrono::milliseconds>{std::chrono::milliseconds(1000)}));
}

TEST_F(ImportRunTest, RegistryFileThatTheToolRefusesIsAProblem) {
  RecordingInterpreter interpreter;
  RegistryTool tool(interpreter, machine_->clock, RegistryToolPace::kWaitForEnd);
  entries_[L"Options\\General.reg"] = "a";
  Describe({"Options"});
  ASSERT_EQ(Enter(), ImportSteps::Entry::kReady);
  const std::wstring file = context_.stagingFolder + L"Options\\General.reg";
  interpreter.succeeds = false;
  PackageImport({context_, state_.package, ports_, tool, *dom_, log_, view_, report_}).Apply(tree_);
  EXPECT_EQ(report_.problems, (Lines{L"Not imported into the registry: " + file}));
  EXPECT_FALSE(view_.finishText.empty());
}

TEST_F(ImportRunTest, RegistryToolThatCannotStartIsAProblem) {
  RecordingInterpreter interpreter;
  RegistryTool tool(interpreter, machine_->clock, RegistryToolPace::kFixedPause);
  entries_[L"Register\\VANTRIC2026.reg"] = "b";
  Describe({"Register"});
  ASSERT_EQ(Enter(), ImportSteps::Entry::kReady);
  interpreter.canStart = false;
  PackageImport({context_, state_.package, ports_, tool, *dom_, log_, view_, report_}).Apply(tree_);
  EXPECT_EQ(report_.problems.size(), 1u);
  EXPECT_TRUE(view_.messages.empty());
}

TEST_F(ImportRunTest, UntickedRegistryCategoriesAreNotImported) {
  RecordingInterpreter interpreter;
  RegistryTool tool(interpreter, machine_->clock, RegistryToolPace::kWaitForEnd);
  entries_[L"Options\\General.reg"] = "a";
  entries_[L"Register\\VANTRIC2026.reg"] = "b";
  Describe({"Options", "Register"});
  ASSERT_EQ(Enter(), ImportSteps::Entry::kReady);
  tree_.SetAllChecked(false);
  PackageImport({context_, state_.package, ports_, tool, *dom_, log_, view_, report_}).Apply(tree_);
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
    ApplyCategory(Run(), data, true);
    ApplyCategory(Run(), data, false);
  }
  EXPECT_TRUE(report_.IsComplete());
}

TEST_F(ImportRunTest, StagingFolderIsGoneAndTheFinishTextNamesTheTarget) {
  Describe({"Options"});
  Import({});
  EXPECT_FALSE(ports_.files.Exists(context_.stagingFolder));
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
  ASSERT_EQ(Enter(), ImportSteps::Entry::kReady);
  const std::wstring staging = context_.stagingFolder;
  PackageImport(Run()).Apply(tree_);
  const std::wstring refused = Local(L"en-us\\Elsewhere\\x.dat");
  EXPECT_EQ(view_.messages, (Lines{L"Failed to extract file: " + refused}));
  EXPECT_EQ(Content(refused), "old");
  EXPECT_EQ(Content(Local(L"en-us\\Elsewhere\\y.dat")), "new");
  EXPECT_EQ(Content(staging + PackageLocal(L"en-us\\Elsewhere\\x.dat")), "new");
  EXPECT_NE(context_.stagingFolder, staging);
  EXPECT_EQ(report_.unextracted, 1u);
  machine_->DeletePath(staging.substr(0, staging.size() - 1));
}

// A package that is trusted by hand, or a reader that takes its names otherwise, may have put
// something there.
TEST_F(ImportRunTest, WhatLiesAtTheOverlaysNamesIsNotLaidOver) {
  entries_[PackageLocal(L"en-us\\Elsewhere\\x.dat")] = "new";
  Describe({"Options"});
  ASSERT_EQ(Enter(), ImportSteps::Entry::kReady);
  const std::wstring root = state_.package.applicationDataRoot;
  const std::wstring archive = context_.stagingFolder + kOverlayArchive;
  machine_->PutFile(machine_->ScratchFolder() + L"gotcha", "gotcha");
  auto writer = ports_.archives.Create(archive, ArchivePurpose::kKeep);
  ASSERT_EQ(writer->Add(L"Roaming\\Startup\\a.bat", machine_->ScratchFolder() + L"gotcha"),
            ArchiveResult::kDone);
  ASSERT_EQ(writer->Close(), ArchiveResult::kDone);
  machine_->PutFile(archive + L".part\\x", "in the way of a new one");
  PackageImport(Run()).Apply(tree_);
  EXPECT_EQ(Content(root + L"Roaming\\Startup\\a.bat"), "no file");
  EXPECT_EQ(Content(Local(L"en-us\\Elsewhere\\x.dat")), "new");
  EXPECT_TRUE(report_.IsComplete());
}

// Keeps a file, whatever is done to it.
class KeepingFiles : public ForwardingFiles {
 public:
  KeepingFiles(FileSystem& files, std::wstring kept)
      : ForwardingFiles(files), kept_(std::move(kept)) {}
  SystemCode RemoveFile(const std::wstring& path) override {
    return path == kept_ ? kSharingViolation : ForwardingFiles::RemoveFile(path);
  }

 private:
  std::wstring kept_;
};

TEST_F(ImportRunTest, ArchiveThatWasNotJustWrittenIsNotUnpacked) {
  entries_[PackageLocal(L"en-us\\Elsewhere\\x.dat")] = "new";
  Describe({"Options"});
  ASSERT_EQ(Enter(), ImportSteps::Entry::kReady);
  const std::wstring staging = context_.stagingFolder;
  const std::wstring root = state_.package.applicationDataRoot;
  machine_->PutFile(machine_->ScratchFolder() + L"gotcha", "gotcha");
  auto writer = ports_.archives.Create(staging + kOverlayArchive, ArchivePurpose::kKeep);
  ASSERT_EQ(writer->Add(L"Roaming\\Startup\\a.bat", machine_->ScratchFolder() + L"gotcha"),
            ArchiveResult::kDone);
  ASSERT_EQ(writer->Close(), ArchiveResult::kDone);
  KeepingFiles files(ports_.files, staging + kOverlayArchive);
  const Machine machine = WithFiles(ports_, files);
  PackageImport({context_, state_.package, machine, *tool_, *dom_, log_, view_, report_})
      .Apply(tree_);
  EXPECT_EQ(Content(root + L"Roaming\\Startup\\a.bat"), "no file");
  EXPECT_FALSE(report_.IsComplete());
  EXPECT_EQ(Content(staging + PackageLocal(L"en-us\\Elsewhere\\x.dat")), "new");
  EXPECT_FALSE(ports_.files.Exists(staging + kRunFolderMark)) << "no other run may remove it";
  machine_->DeletePath(staging.substr(0, staging.size() - 1));
}

TEST_F(ImportRunTest, OverlayThatCannotBeWrittenIsKept) {
  entries_[PackageLocal(L"en-us\\Elsewhere\\x.dat")] = "new";
  Describe({"Options"});
  ASSERT_EQ(Enter(), ImportSteps::Entry::kReady);
  const std::wstring staging = context_.stagingFolder;
  FailingArchives archives(ports_.archives, ArchiveResult::kDone, 1000);
  archives.closeResult = ArchiveResult::kDiskFull;
  const Machine machine = WithArchives(ports_, archives);
  PackageImport({context_, state_.package, machine, *tool_, *dom_, log_, view_, report_})
      .Apply(tree_);
  EXPECT_EQ(Content(Local(L"en-us\\Elsewhere\\x.dat")), "no file");
  EXPECT_EQ(Content(staging + PackageLocal(L"en-us\\Elsewhere\\x.dat")), "new");
  machine_->DeletePath(staging.substr(0, staging.size() - 1));
}

TEST_F(ImportRunTest, StagingFolderMayBeSweptUntilThePackageIsApplied) {
  Describe({"Options"});
  ASSERT_EQ(Enter(), ImportSteps::Entry::kReady);
  const std::wstring mark = context_.stagingFolder + kRunFolderMark;
  EXPECT_TRUE(ports_.files.Exists(mark));
  class Looking : public RecordingInterpreter {
   public:
    std::function<void()> look;
    std::unique_ptr<RunningCommand> Start(const std::wstring& parameters) override {
      look();
      return RecordingInterpreter::Start(parameters);
    }
  } interpreter;
  bool marked = true;
  interpreter.look = [&] { marked = ports_.files.Exists(mark); };
  machine_->PutFile(context_.stagingFolder + L"Options\\General.reg", "REGEDIT4\r\n");
  RegistryTool tool(interpreter, machine_->clock, RegistryToolPace::kWaitForEnd);
  tree_.SetChecked(tree_.Root(), true);
  PackageImport({context_, state_.package, ports_, tool, *dom_, log_, view_, report_}).Apply(tree_);
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
  ASSERT_EQ(Enter(), ImportSteps::Entry::kReady);
  const std::wstring staging = context_.stagingFolder;
  state_.package.applicationDataRoot.clear();
  PackageImport(Run()).Apply(tree_);
  EXPECT_EQ(Content(staging + PackageLocal(L"en-us\\Elsewhere\\x.dat")), "new");
  EXPECT_EQ(report_.problems.size(), 2u);
  machine_->DeletePath(staging.substr(0, staging.size() - 1));
}

TEST_F(ImportRunTest, KeptStagingFolderIsNobodysToDeleteEvenWithoutAFreshOne) {
  entries_[PackageLocal(L"en-us\\Elsewhere\\x.dat")] = "new";
  Describe({"Options"});
  ASSERT_EQ(Enter(), ImportSteps::Entry::kReady);
  const std::wstring staging = context_.stagingFolder;
  state_.package.applicationDataRoot.clear();
  FixedGuids guids;
  guids.guid.reset();
  const Machine machine = WithGuids(ports_, guids);
  PackageImport({context_, state_.package, machine, *tool_, *dom_, log_, view_, report_})
      .Apply(tree_);
  DeleteStagingFolder(context_, ports_);
  EXPECT_EQ(Content(staging + PackageLocal(L"en-us\\Elsewhere\\x.dat")), "new");
  machine_->DeletePath(staging.substr(0, staging.size() - 1));
}

// The drafting program's folder of release 2026 in the user's Local folder.
class DraftingImportTest : public ImportRunTest {
 protected:
  std::wstring Draft(const std::wstring& root, const std::wstring& below) const {
    return root + L"\\ORMA\\ORMA CAD TVRN-INT-" + context_.productName + L" 2026 (x64)\\" + below;
  }
  std::wstring OwnDraft(const std::wstring& half, const std::wstring& below) const {
    return Draft(state_.package.applicationDataRoot + half, below);
  }
};

TEST_F(DraftingImportTest, TickedReplacesBothHalves) {
  for (const std::wstring half : {L"Local", L"Roaming"}) {
    entries_[Draft(half, L"26.0\\new.ini")] = "package";
    machine_->PutFile(OwnDraft(half, L"26.0\\old.ini"), "own");
  }
  Describe({"2D Draft Settings"});
  Import({Draft2dSettings});
  for (const std::wstring half : {L"Local", L"Roaming"}) {
    EXPECT_EQ(Content(OwnDraft(half, L"26.0\\new.ini")), "package");
    EXPECT_EQ(Content(OwnDraft(half, L"26.0\\old.ini")), "no file");
  }
}

TEST_F(DraftingImportTest, UntickedRemovesBothHalvesOfThePackage) {
  for (const std::wstring half : {L"Local", L"Roaming"}) {
    entries_[Draft(half, L"26.0\\new.ini")] = "package";
    machine_->PutFile(OwnDraft(half, L"26.0\\old.ini"), "own");
  }
  Describe({"2D Draft Settings"});
  Import({});
  for (const std::wstring half : {L"Local", L"Roaming"}) {
    EXPECT_EQ(Content(OwnDraft(half, L"26.0\\new.ini")), "no file");
    EXPECT_EQ(Content(OwnDraft(half, L"26.0\\old.ini")), "own");
  }
}

class CopyProductFolderTreeTest : public ImportFixture {
 protected:
  void Copy(bool recursive, bool same) {
    CopyProductFolderTree(ports_.files, From(L""), To(L"") + L"\\", recursive, same);
  }
  std::wstring From(const std::wstring& below) const {
    return machine_->ScratchFolder() + L"from\\" + below;
  }
  std::wstring To(const std::wstring& below) const {
    return machine_->ScratchFolder() + L"to\\" + below;
  }
};

TEST_F(CopyProductFolderTreeTest, MenuAndShortcutFilesGoOverNamesakes) {
  for (const std::wstring name : {L"a.UIK", L"b.acc", L"c.Uik", L"d.ini"}) {
    machine_->PutFile(From(name), "new");
    machine_->PutFile(To(name), "old");
  }
  machine_->PutFile(From(L"e.uik"), "new");
  Copy(false, false);
  EXPECT_EQ(Content(To(L"a.UIK")), "new");
  EXPECT_EQ(Content(To(L"b.acc")), "new");
  EXPECT_EQ(Content(To(L"c.Uik")), "new");
  EXPECT_EQ(Content(To(L"d.ini")), "old");
  EXPECT_EQ(Content(To(L"e.uik")), "no file");
}

TEST_F(CopyProductFolderTreeTest, SameReleaseCopiesNothing) {
  machine_->PutFile(From(L"a.UIK"), "new");
  machine_->PutFile(To(L"a.UIK"), "old");
  Copy(true, true);
  EXPECT_EQ(Content(To(L"a.UIK")), "old");
}

TEST_F(CopyProductFolderTreeTest, SubfoldersAreWalkedWhenAskedFor) {
  machine_->PutFile(From(L"sub\\a.UIK"), "new");
  machine_->PutFile(To(L"sub\\a.UIK"), "old");
  Copy(false, false);
  EXPECT_EQ(Content(To(L"sub\\a.UIK")), "old");
  Copy(true, false);
  EXPECT_EQ(Content(To(L"sub\\a.UIK")), "new");
}

TEST_F(CopyProductFolderTreeTest, FileThatCannotBeDeletedIsNotCopiedOver) {
  machine_->PutFile(From(L"a.UIK"), "new");
  machine_->PutFile(To(L"a.UIK"), "old");
  machine_->MakeReadOnly(To(L"a.UIK"));
  Copy(false, false);
  EXPECT_EQ(Content(To(L"a.UIK")), "old");
}

}  // namespace
}  // namespace carrovan
