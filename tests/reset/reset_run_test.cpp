#include "reset/reset_run.h"

#include "environment/version_folders.h"
#include "package/staging_folder.h"
#include "tests/package/import_fixture.h"
#include "tests/support/faulty_machine.h"
#include "text/text.h"
#include "wizard/category_tree.h"

namespace carrovan {
namespace {

using enum SettingCategory;
using Lines = std::vector<std::wstring>;

class ResetRunTest : public ImportFixture {
 protected:
  // A file in every folder of the category, and one beside it.
  void FillCategories() {
    for (const CategoryRecord& record : CategoryTable()) {
      for (const std::wstring& folder : CategoryFolders(record, context_)) {
        machine_->PutFile(folder + L"\\deep\\own.dat", "own");
      }
    }
    machine_->PutFile(Local(L"en-us\\other.dat"), "other");
  }

  void Reset(const std::vector<SettingCategory>& categories) {
    ResetOn(ports_, {categories.begin(), categories.end()});
  }
  void ResetOn(const Machine& machine, const CategorySet& categories) {
    report_ = RunReset({context_, state_.package, machine, *tool_, observer_}, categories);
  }

  bool IsThere(SettingCategory category) const {
    for (const auto& folder :
         CategoryFolders(*FindCategory(static_cast<int>(category)), context_)) {
      if (Content(folder + L"\\deep\\own.dat") == "own") return true;
    }
    return false;
  }

  void PutDefault(const std::wstring& subkey, const std::wstring& name, const std::wstring& text) {
    machine_->PutValue(RegistryHive::kLocalMachine, DefaultKey(context_) + subkey,
                       MakeStringValue(name, text));
  }
  void PutLive(const std::wstring& subkey, const std::wstring& name, const std::wstring& text) {
    machine_->PutValue(RegistryHive::kCurrentUser, LiveKey(context_) + subkey,
                       MakeStringValue(name, text));
  }
  std::optional<RegistryValue> Live(const std::wstring& subkey, const std::wstring& name) const {
    return machine_->Value(RegistryHive::kCurrentUser, LiveKey(context_) + subkey, name);
  }
};

TEST_F(ResetRunTest, EachFolderCategoryIsWipedForItself) {
  for (const CategoryRecord& record : CategoryTable()) {
    if (CategoryFolders(record, context_).empty() || record.category == Draft2dSettings) continue;
    FillCategories();
    Reset({record.category});
    for (const CategoryRecord& other : CategoryTable()) {
      if (CategoryFolders(other, context_).empty()) continue;
      EXPECT_EQ(IsThere(other.category), other.category != record.category)
          << static_cast<int>(record.category) << ' ' << static_cast<int>(other.category);
    }
    EXPECT_EQ(Content(Local(L"en-us\\other.dat")), "other");
  }
}

TEST_F(ResetRunTest, UncheckedCategoriesKeepEverything) {
  FillCategories();
  PutLive(L"\\General", L"own", L"1");
  Reset({});
  EXPECT_TRUE(IsThere(InterfaceLayout));
  EXPECT_TRUE(Live(L"\\General", L"own"));
  EXPECT_TRUE(report_.IsComplete());
}

TEST_F(ResetRunTest, ShortcutsDoNotTouchTheInterfaceLayout) {
  FillCategories();
  Reset({ShortcutKey});
  EXPECT_FALSE(IsThere(ShortcutKey));
  EXPECT_TRUE(IsThere(InterfaceLayout));
}

TEST_F(ResetRunTest, WithoutLanguagesOnlyTheSingleFoldersAreWiped) {
  FillCategories();
  const auto languages = context_.installLanguages;
  context_.installLanguages.clear();
  Reset({InterfaceLayout, ShortcutKey, CustomMaterials, Draft2dSettings});
  EXPECT_FALSE(IsThere(ShortcutKey));
  EXPECT_EQ(Content(context_.localFolder + L"\\deep\\own.dat"), "no file");
  context_.installLanguages = languages;
  EXPECT_TRUE(IsThere(InterfaceLayout));
  EXPECT_TRUE(IsThere(CustomMaterials));
}

TEST_F(ResetRunTest, OptionsAreRestoredSubkeyBySubkey) {
  PutDefault(L"\\General", L"factory", L"1");
  PutDefault(L"\\General\\Deep", L"factory", L"2");
  PutLive(L"\\General", L"own", L"1");
  PutLive(L"\\Grid", L"own", L"1");
  PutLive(L"\\Unlisted", L"own", L"1");
  Reset({Options});
  EXPECT_EQ(Live(L"\\General", L"factory"), MakeStringValue(L"factory", L"1"));
  EXPECT_EQ(Live(L"\\General\\Deep", L"factory"), MakeStringValue(L"factory", L"2"));
  EXPECT_FALSE(Live(L"\\General", L"own"));
  EXPECT_FALSE(Live(L"\\Grid", L"own"));
  EXPECT_TRUE(Live(L"\\Unlisted", L"own"));
}

TEST_F(ResetRunTest, RegisterIsRestoredWhole) {
  PutDefault(L"", L"factory", L"0");
  PutDefault(L"\\Any\\Deep", L"factory", L"1");
  PutLive(L"\\Unlisted", L"own", L"1");
  Reset({Register});
  EXPECT_TRUE(Live(L"", L"factory"));
  EXPECT_TRUE(Live(L"\\Any\\Deep", L"factory"));
  EXPECT_FALSE(Live(L"\\Unlisted", L"own"));
  EXPECT_TRUE(report_.IsComplete());
}

TEST_F(ResetRunTest, WithoutADefaultKeyTheLiveKeyStaysDeletedAndNothingIsShown) {
  PutLive(L"\\General", L"own", L"1");
  Reset({Register});
  EXPECT_FALSE(ports_.registry->CanOpenKey(RegistryHive::kCurrentUser, LiveKey(context_)));
  EXPECT_EQ(report_.problems, (Lines{RegistryRoot(context_) + L": no factory default: removed"}));
}

TEST_F(ResetRunTest, EachOptionKeyWithoutADefaultIsNamedAndThoseThatWereNotThereAreNot) {
  PutDefault(L"\\General", L"factory", L"1");
  PutDefault(L"\\Model", L"factory", L"1");
  PutLive(L"\\General", L"own", L"1");
  PutLive(L"\\Grid\\Deep", L"own", L"1");
  PutLive(L"\\Export Options", L"own", L"1");
  PutLive(L"\\Unlisted", L"own", L"1");
  Reset({Options});
  const std::wstring root = RegistryRoot(context_);
  EXPECT_EQ(report_.problems, (Lines{root + L"\\Grid: no factory default: removed",
                                     root + L"\\Export Options: no factory default: removed"}));
  EXPECT_FALSE(
      ports_.registry->CanOpenKey(RegistryHive::kCurrentUser, LiveKey(context_) + L"\\Grid"));
}

TEST_F(ResetRunTest, DefaultsThatCannotBeReadAreNotCalledMissing) {
  PutDefault(L"\\Grid", L"factory", L"1");
  PutLive(L"\\Grid", L"own", L"1");
  if (!machine_->MakeKeyUnreadable(RegistryHive::kLocalMachine, DefaultKey(context_) + L"\\Grid")) {
    GTEST_SKIP() << "no key can be closed here";
  }
  Reset({Options});
  EXPECT_EQ(report_.problems,
            (Lines{L"Not restored from the factory defaults: " + RegistryRoot(context_) +
                   L"\\Grid: " + DescribeSystemCode(kAccessDenied)}));
}

TEST_F(ResetRunTest, KeyThatCannotBeDeletedIsNamedAlthoughTheDefaultsWereCopied) {
  PutDefault(L"\\General", L"factory", L"1");
  PutLive(L"\\General", L"own", L"1");
  Fault fault(FaultyPort::kRegistryEditor, 1, false);  // the first key's deletion
  FaultyMachine faulty(ports_, fault);
  const Machine machine = faulty.Ports();
  ResetOn(machine, {Options});
  ASSERT_EQ(report_.problems.size(), 1u);
  EXPECT_TRUE(report_.problems[0].starts_with(L"Not restored from the factory defaults: " +
                                              RegistryRoot(context_) + L"\\General: "));
  EXPECT_TRUE(Live(L"\\General", L"own"));
  EXPECT_TRUE(Live(L"\\General", L"factory"));
}

TEST_F(ResetRunTest, KeyRestoreOfAMissingLiveKeyCreatesIt) {
  PutDefault(L"\\Grid", L"factory", L"1");
  const KeyRestore restore =
      RestoreKey(DefaultKey(context_) + L"\\Grid", LiveKey(context_) + L"\\Grid", *ports_.registry);
  EXPECT_EQ(restore.deleted, kFileNotFound);
  EXPECT_EQ(restore.copied, kSystemOk);
  EXPECT_TRUE(Live(L"\\Grid", L"factory"));
}

TEST_F(ResetRunTest, VantricDraftingWipesTheNumberedFolderInRoamingAndTheLocalOne) {
  const std::wstring roaming = *ports_.folders->RoamingAppData();
  machine_->PutFile(roaming + L"\\26.0\\x.dat", "x");
  machine_->PutFile(context_.localFolder + L"\\26.0\\x.dat", "x");
  Reset({Draft2dSettings});
  EXPECT_FALSE(ports_.files->Exists(roaming + L"\\26.0"));
  EXPECT_FALSE(ports_.files->Exists(context_.localFolder));
}

TEST_F(ResetRunTest, OrmaDraftingWipesItsProductFolders) {
  context_.companyShortName = L"ORMA";
  const std::wstring folder =
      *ports_.folders->RoamingAppData() + L"\\ORMA\\ORMA CAD TVRN-INT 2026 (x64)\\26.0";
  machine_->PutFile(folder + L"\\x.dat", "x");
  machine_->PutFile(context_.localFolder + L"\\26.0\\x.dat", "x");
  Reset({Draft2dSettings});
  EXPECT_FALSE(ports_.files->Exists(folder));
  EXPECT_FALSE(ports_.files->Exists(context_.localFolder));
}

TEST_F(ResetRunTest, DraftingWipesTheLocalFolderAlsoWhereRoamingCannotBeTold) {
  machine_->PutFile(context_.localFolder + L"\\26.0\\x.dat", "x");
  FixedFolders folders;
  folders.roaming.reset();
  const Machine machine = With<&Machine::folders>(ports_, folders);
  ResetOn(machine, {Draft2dSettings});
  EXPECT_FALSE(ports_.files->Exists(context_.localFolder));
}

TEST_F(ResetRunTest, EachOfferedCategoryHasItsTurnInOrder) {
  class Notes : public RunObserver {
   public:
    std::vector<SettingCategory> turns;
    void OnCategory(SettingCategory category) override { turns.push_back(category); }
  };
  Notes notes;
  RunReset({context_, state_.package, ports_, *tool_, notes}, {});
  const CategorySet offered = OfferedOnReset(context_);
  EXPECT_EQ(notes.turns, std::vector(offered.begin(), offered.end()));
}

TEST_F(ResetRunTest, FailuresDoNotChangeTheFinishText) {
  FillCategories();
  machine_->MakeReadOnly(Local(L"en-us\\materials\\deep\\own.dat"));
  Reset({CustomMaterials});
  EXPECT_EQ(ResetFinishText(context_),
            context_.productName +
                L" 2026 Relevant settings selected have been reset. \n\nSettings take effect after "
                L"restarting ");
  EXPECT_EQ(Content(Local(L"en-us\\materials\\deep\\own.dat")), "own");
  EXPECT_FALSE(report_.IsComplete());
}

// Names without a folder in front would be looked for in the folder that the program runs in.
TEST_F(ResetRunTest, WithoutAStagingFolderOnlyTheCategoriesAreTouched) {
  class AbsolutePathsOnly : public ForwardingFiles {
   public:
    using ForwardingFiles::ForwardingFiles;
    bool IsFolder(const std::wstring& path) const override {
      EXPECT_TRUE(path.starts_with(L"C:\\")) << ToUtf8(path);
      return ForwardingFiles::IsFolder(path);
    }
  };
  DeleteStagingFolder(context_, ports_);
  context_.stagingFolder.clear();
  AbsolutePathsOnly files(*ports_.files);
  const Machine machine = With<&Machine::files>(ports_, files);
  FillCategories();
  ResetOn(machine, OfferedOnReset(context_));
  EXPECT_FALSE(IsThere(CosmeticThread));
}

TEST_F(ResetRunTest, FixedPauseIsMadeOnce) {
  PacedRegistryTool tool(*ports_.registryTool, *ports_.clock, RegistryToolPace::kFixedPause);
  RunReset({context_, state_.package, ports_, tool, observer_}, {});
  EXPECT_EQ(machine_->clock.pauses,
            (std::vector<std::chrono::milliseconds>{std::chrono::milliseconds(1000)}));
}

}  // namespace
}  // namespace carrovan
