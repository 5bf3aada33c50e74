#include <algorithm>

#include "environment/version_folders.h"
#include "platform/registry_tool.h"
#include "tests/package/export_fixture.h"

namespace carrovan {
namespace {

using Names = std::vector<std::wstring>;
using enum SettingCategory;

constexpr char kOldPackage[] = "the user's older package, which must never be lost";

// Exports on machines where something goes wrong.
class ExportTrouble : public ExportFixture {
 protected:
  Names SkippedPaths(const ExportReport& report) const {
    Names paths;
    for (const SkippedItem& item : report.package.skipped) paths.push_back(item.path);
    return paths;
  }
};

TEST_F(ExportTrouble, MissingCategoryFolderOfOneLanguageIsPassedOver) {
  machine_->DeletePath(Local(L"zh-cn\\materials"));
  CheckOnly({CustomMaterials});
  const auto report = Export();
  EXPECT_EQ(EntryNames().size(), 2u);
  EXPECT_TRUE(report.package.skipped.empty());
  EXPECT_TRUE(report.emptyCategories.empty());
}

TEST_F(ExportTrouble, CategoryOfWhichTheUserHasNothingIsNamed) {
  machine_->DeletePath(Local(L"zh-cn\\materials"));
  machine_->DeletePath(Local(L"en-us\\materials"));
  CheckOnly({CustomMaterials, CosmeticThread});
  const auto report = Export();
  EXPECT_EQ(report.emptyCategories, std::vector<SettingCategory>{CustomMaterials});
  EXPECT_EQ(EntryNames().size(), 3u);
}

TEST_F(ExportTrouble, CategoryWhoseKeysTheUserLacksIsNamed) {
  machine_->product.productVersion = L"28.5";
  context_.productVersion = L"28.5";
  ASSERT_TRUE(PrepareVersionFolders(context_, Ports()));
  CheckOnly({Register});
  const auto report = Export();
  EXPECT_EQ(report.emptyCategories, std::vector<SettingCategory>{Register});
  EXPECT_TRUE(report.missingKeys.empty());
}

TEST_F(ExportTrouble, CategoryOfOnlyLockedFilesIsNotCalledEmpty) {
  machine_->DeletePath(Local(L"zh-cn\\materials"));
  machine_->MakeUnreadable(Local(L"en-us\\materials\\steel.mat"));
  CheckOnly({CustomMaterials});
  const auto report = Export();
  EXPECT_EQ(report.package.skipped.size(), 1u);
  EXPECT_TRUE(report.emptyCategories.empty());
}

TEST_F(ExportTrouble, LockedFileIsPassedOverAndNamed) {
  const std::wstring locked = Local(L"en-us\\materials\\locked.mat");
  machine_->PutFile(locked, "in use");
  machine_->MakeUnreadable(locked);
  CheckOnly({CustomMaterials});
  const auto report = Export();
  EXPECT_EQ(SkippedPaths(report), Names{locked});
  EXPECT_EQ(report.package.skipped[0].reason, ArchiveResult::kSourceUnreadable);
  EXPECT_EQ(EntryNames().size(), 3u);
}

// Lists a file that is gone when it is asked for.
class VanishingFiles : public ForwardingFiles {
 public:
  VanishingFiles(FileSystem& files, std::wstring vanished)
      : ForwardingFiles(files), vanished_(std::move(vanished)) {}

  bool Exists(const std::wstring& path) const override {
    return path != vanished_ && ForwardingFiles::Exists(path);
  }

 private:
  std::wstring vanished_;
};

TEST_F(ExportTrouble, FileThatVanishesAfterListingIsPassedOver) {
  const std::wstring vanished = Local(L"en-us\\materials\\steel.mat");
  VanishingFiles files(*Ports().files, vanished);
  CheckOnly({CustomMaterials});
  const auto report = ExportOn(With<&Machine::files>(Ports(), files));
  EXPECT_EQ(report.package.outcome, ArchiveResult::kDone);
  EXPECT_EQ(SkippedPaths(report), Names{vanished});
  EXPECT_EQ(EntryNames().size(), 2u);
}

TEST_F(ExportTrouble, UnwritableTargetFolderReportsSuccessAndLeavesNothing) {
  const std::wstring folder = machine_->ScratchFolder() + L"closed";
  machine_->MakeFolder(folder);
  machine_->MakeFolderUnwritable(folder);
  packagePath_ = folder + L"\\x.ucex";
  const auto report = Export();
  EXPECT_EQ(report.package.outcome, ArchiveResult::kTargetNotWritable);
  EXPECT_EQ(ExportFinishText(packagePath_),
            L"Your settings have been successfully exported to  " + packagePath_);
  EXPECT_TRUE(ListFolder(*Ports().files, folder).empty());
}

TEST_F(ExportTrouble, MissingTargetFolderIsNotMade) {
  packagePath_ = machine_->ScratchFolder() + L"missing\\x.ucex";
  const auto report = Export();
  EXPECT_EQ(report.package.outcome, ArchiveResult::kTargetNotWritable);
  EXPECT_FALSE(Ports().files->Exists(machine_->ScratchFolder() + L"missing"));
}

TEST_F(ExportTrouble, ReadOnlyPackageStaysWhole) {
  machine_->PutFile(PackagePath(), kOldPackage);
  machine_->MakeReadOnly(PackagePath());
  const auto report = Export();
  EXPECT_NE(report.package.outcome, ArchiveResult::kDone);
  EXPECT_EQ(machine_->FileBytes(PackagePath()), kOldPackage);
}

TEST_F(ExportTrouble, FullDiskAtAnyFileLeavesTheOldPackageWhole) {
  machine_->PutFile(PackagePath(), kOldPackage);
  constexpr std::size_t kMoreThanThereAre = 40;
  std::size_t survived = 0;
  for (std::size_t n = 0; n < kMoreThanThereAre; ++n) {
    FailingArchives archives(*Ports().archives, ArchiveResult::kDiskFull, n);
    const auto report = ExportOn(With<&Machine::archives>(Ports(), archives));
    if (report.package.outcome == ArchiveResult::kDone) break;
    EXPECT_EQ(report.package.outcome, ArchiveResult::kDiskFull);
    EXPECT_FALSE(archives.closed);
    EXPECT_EQ(machine_->FileBytes(PackagePath()), kOldPackage) << n;
    ++survived;
  }
  EXPECT_GT(survived, 15u);
  EXPECT_GT(EntryNames().size(), 15u);
}

TEST_F(ExportTrouble, FullDiskWhileClosingLeavesTheOldPackageWhole) {
  machine_->PutFile(PackagePath(), kOldPackage);
  FailingArchives archives(*Ports().archives, ArchiveResult::kDone, 1000);
  archives.closeResult = ArchiveResult::kDiskFull;
  const auto report = ExportOn(With<&Machine::archives>(Ports(), archives));
  EXPECT_EQ(report.package.outcome, ArchiveResult::kDiskFull);
  EXPECT_EQ(machine_->FileBytes(PackagePath()), kOldPackage);
}

TEST_F(ExportTrouble, FailedExportOfANewPackageLeavesNoEmptyFile) {
  FailingArchives archives(*Ports().archives, ArchiveResult::kDiskFull, 3);
  ExportOn(With<&Machine::archives>(Ports(), archives));
  EXPECT_FALSE(Ports().files->Exists(PackagePath()));
}

TEST_F(ExportTrouble, UnreadableFilesDoNotStopTheOthers) {
  FailingArchives archives(*Ports().archives, ArchiveResult::kSourceUnreadable, 3);
  const auto report = ExportOn(With<&Machine::archives>(Ports(), archives));
  EXPECT_EQ(report.package.outcome, ArchiveResult::kDone);
  EXPECT_EQ(EntryNames().size(), 3u);
  EXPECT_GT(report.package.skipped.size(), 15u);
}

TEST_F(ExportTrouble, InterpreterThatCannotStartGivesAPackageWithoutRegistryFiles) {
  RecordingInterpreter interpreter;
  interpreter.canStart = false;
  CheckOnly({Options, Register, ShortcutKey});
  const auto report = ExportOn(With<&Machine::registryTool>(Ports(), interpreter.tool));
  EXPECT_EQ(EntryNames().size(), 2u);
  EXPECT_TRUE(report.emptyCategories.empty()) << "the keys are named, so there is something";
  const std::wstring root = RegistryRoot(context_);
  EXPECT_EQ(report.missingKeys,
            (Names{root + L"\\General", root + L"\\SheetMetal", root + L"\\Point Snap", root}));
}

TEST_F(ExportTrouble, KeyWhoseToolEndedWithoutAWordIsTriedAgain) {
  CheckOnly({Register});
  HastyRegistryTool hasty(*Ports().registryTool, kRegistryToolAttempts - 1);
  const auto report = ExportOn(With<&Machine::registryTool>(Ports(), hasty));
  EXPECT_TRUE(report.missingKeys.empty());
  EXPECT_EQ(EntryNames().size(), 2u);

  HastyRegistryTool tooOften(*Ports().registryTool, kRegistryToolAttempts);
  ExportOn(With<&Machine::registryTool>(Ports(), tooOften));
  EXPECT_EQ(tooOften.started, kRegistryToolAttempts);
}

TEST_F(ExportTrouble, KeyThatIsNotThereIsAskedForOnce) {
  CheckOnly({Options});
  HastyRegistryTool counting(*Ports().registryTool, 0);
  ExportOn(With<&Machine::registryTool>(Ports(), counting));
  EXPECT_EQ(counting.started, 26);
}

TEST_F(ExportTrouble, UnreadableKeyIsNamed) {
  const std::wstring key = LiveKey(context_) + L"\\General";
  if (!machine_->MakeKeyUnreadable(RegistryHive::kCurrentUser, key)) {
    GTEST_SKIP() << "this system lets its administrator read every key";
  }
  CheckOnly({Options});
  const auto report = Export();
  EXPECT_EQ(report.missingKeys, Names{RegistryRoot(context_) + L"\\General"});
  EXPECT_EQ(EntryNames().size(), 3u);
}

// The disk is full for one file only, and again has room for the next.
class OnceFullArchives : public ArchiveLibrary {
 public:
  OnceFullArchives(ArchiveLibrary& library, std::wstring file)
      : library_(library), file_(std::move(file)) {}

  std::unique_ptr<ArchiveWriter> Create(const std::wstring& path, ArchivePurpose purpose) override {
    return std::make_unique<Writer>(library_.Create(path, purpose), file_);
  }
  std::unique_ptr<ArchiveReader> Open(const std::wstring& path) override {
    return library_.Open(path);
  }

 private:
  class Writer : public ArchiveWriter {
   public:
    Writer(std::unique_ptr<ArchiveWriter> writer, const std::wstring& file)
        : writer_(std::move(writer)), file_(file) {}
    ArchiveResult Add(const std::wstring& entry, const std::wstring& source) override {
      return source == file_ ? ArchiveResult::kDiskFull : writer_->Add(entry, source);
    }
    ArchiveResult Close() override { return writer_->Close(); }

   private:
    std::unique_ptr<ArchiveWriter> writer_;
    const std::wstring& file_;
  };

  ArchiveLibrary& library_;
  std::wstring file_;
};

TEST_F(ExportTrouble, FullDiskInTheMidstOfAFolderIsNotForgottenAtTheNextFile) {
  machine_->PutFile(PackagePath(), kOldPackage);
  const std::wstring full = Local(L"en-us\\materials\\a.mat");
  machine_->PutFile(full, "too much");
  machine_->PutFile(Local(L"en-us\\materials\\z.mat"), "fits again");
  OnceFullArchives archives(*Ports().archives, full);
  CheckOnly({CustomMaterials});
  const auto report = ExportOn(With<&Machine::archives>(Ports(), archives));
  EXPECT_EQ(report.package.outcome, ArchiveResult::kDiskFull);
  EXPECT_EQ(machine_->FileBytes(PackagePath()), kOldPackage);
}

// A disk that is full after so many keys of a description. Some systems say so and some do not.
class FullProfiles : public ProfileFile {
 public:
  explicit FullProfiles(ProfileFile& profiles) : profiles_(profiles) {}

  std::size_t fitting = 0;
  bool saysSo = true;

  std::wstring ReadValue(const std::wstring& section, const std::wstring& key,
                         const std::wstring& filePath) const override {
    return profiles_.ReadValue(section, key, filePath);
  }
  bool WriteValue(const std::wstring& section, const std::wstring& key, const std::wstring& value,
                  const std::wstring& filePath) override {
    if (fitting == 0) return !saysSo;
    --fitting;
    return profiles_.WriteValue(section, key, value, filePath);
  }

 private:
  ProfileFile& profiles_;
};

TEST_F(ExportTrouble, DescriptionThatIsNotWrittenWholeLeavesTheOldPackage) {
  constexpr std::size_t kKeys = 2 + 4;
  CheckOnly({CustomMaterials, CosmeticThread});
  for (const bool saysSo : {true, false}) {
    for (std::size_t fitting = 0; fitting < kKeys; ++fitting) {
      machine_->PutFile(PackagePath(), kOldPackage);
      FullProfiles profiles(*Ports().profiles);
      profiles.fitting = fitting;
      profiles.saysSo = saysSo;
      const auto report = ExportOn(With<&Machine::profiles>(Ports(), profiles));
      EXPECT_NE(report.package.outcome, ArchiveResult::kDone) << fitting;
      EXPECT_NE(report.refusal.find(L"could not be written and read back"), std::wstring::npos);
      EXPECT_EQ(machine_->FileBytes(PackagePath()), kOldPackage) << fitting;
      EXPECT_EQ(ExportFinishText(packagePath_),
                L"Your settings have been successfully exported to  " + PackagePath());
    }
  }
  FullProfiles profiles(*Ports().profiles);
  profiles.fitting = kKeys;
  EXPECT_EQ(ExportOn(With<&Machine::profiles>(Ports(), profiles)).package.outcome,
            ArchiveResult::kDone);
}

TEST_F(ExportTrouble, NewPackageWithoutADescriptionLeavesNoEmptyFile) {
  FullProfiles profiles(*Ports().profiles);
  ExportOn(With<&Machine::profiles>(Ports(), profiles));
  EXPECT_FALSE(Ports().files->Exists(PackagePath()));
}

TEST_F(ExportTrouble, DescriptionThatMarksMoreThanTheRunStoresLeavesTheOldPackage) {
  CheckOnly({CustomMaterials, CosmeticThread});
  Export();
  machine_->PutFile(PackagePath(), kOldPackage);
  CheckOnly({CustomMaterials});
  KeepingFiles files(*Ports().files, context_.packageDescriptionPath);
  const auto report = ExportOn(With<&Machine::files>(Ports(), files));
  EXPECT_NE(report.package.outcome, ArchiveResult::kDone);
  EXPECT_EQ(machine_->FileBytes(PackagePath()), kOldPackage);
}

TEST_F(ExportTrouble, DescriptionThatCannotBeStoredLeavesTheOldPackage) {
  machine_->PutFile(PackagePath(), kOldPackage);
  FailingArchives archives(*Ports().archives, ArchiveResult::kSourceUnreadable, 0);
  const auto report = ExportOn(With<&Machine::archives>(Ports(), archives));
  EXPECT_NE(report.package.outcome, ArchiveResult::kDone);
  EXPECT_FALSE(archives.closed);
  EXPECT_EQ(machine_->FileBytes(PackagePath()), kOldPackage);
}

TEST_F(ExportTrouble, PackageThatWouldHoldNothingOfWhatIsThereLeavesTheOldOne) {
  machine_->PutFile(PackagePath(), kOldPackage);
  machine_->MakeUnreadable(Local(L"en-us\\materials\\steel.mat"));
  machine_->MakeUnreadable(Local(L"zh-cn\\materials\\steel.mat"));
  CheckOnly({CustomMaterials});
  const auto report = Export();
  EXPECT_EQ(report.refusal, L"nothing of what is there could be stored");
  EXPECT_EQ(machine_->FileBytes(PackagePath()), kOldPackage);
}

// A path that is taken only while the export looks at it.
class HidingFiles : public ForwardingFiles {
 public:
  HidingFiles(FileSystem& files, std::wstring hidden)
      : ForwardingFiles(files), hidden_(std::move(hidden)) {}

  bool Exists(const std::wstring& path) const override {
    return path != hidden_ && ForwardingFiles::Exists(path);
  }

 private:
  std::wstring hidden_;
};

TEST_F(ExportTrouble, PackageThatAppearsWhileItsPathIsTakenStaysWhole) {
  machine_->PutFile(PackagePath(), kOldPackage);
  HidingFiles files(*Ports().files, PackagePath());
  FailingArchives archives(*Ports().archives, ArchiveResult::kDiskFull, 0);
  ExportOn(With<&Machine::archives>(With<&Machine::files>(Ports(), files), archives));
  EXPECT_EQ(machine_->FileBytes(PackagePath()), kOldPackage);
}

// A registry tool whose files are cut short when they hold a text, and which may say so or not.
class CuttingRegistryTool : public ForwardingRegistryTool {
 public:
  CuttingRegistryTool(RegistryTool& tool, TestMachine& machine, std::wstring folder)
      : ForwardingRegistryTool(tool), machine_(machine), folder_(std::move(folder)) {}

  std::vector<std::wstring> cut;  // names of files; an empty list stands for all
  std::size_t missingBytes = 5;
  bool fails = false;

  std::unique_ptr<RunningTool> ExportKey(const std::wstring& key,
                                         const std::wstring& path) override {
    auto running = ForwardingRegistryTool::ExportKey(key, path);
    if (!running || !running->WaitForEnd()) return running;
    const std::wstring file = path.substr(folder_.size());
    if (!cut.empty() && std::ranges::find(cut, file) == cut.end()) return running;
    const std::string bytes = machine_.FileBytes(path).value_or("");
    machine_.PutFile(path, bytes.substr(0, bytes.size() - missingBytes));
    return fails ? std::make_unique<EndedTool>(false) : std::move(running);
  }

 private:
  TestMachine& machine_;
  std::wstring folder_;
};

class CutRegistryFiles : public ExportTrouble {
 protected:
  ExportReport ExportCut() { return ExportOn(With<&Machine::registryTool>(Ports(), tool_)); }
  std::wstring Key(const std::wstring& subkey) const { return RegistryRoot(context_) + subkey; }
  bool Holds(const std::wstring& name) { return Entries().contains(name); }

  CuttingRegistryTool tool_{*Ports().registryTool, *machine_, context_.stagingFolder};
};

TEST_F(CutRegistryFiles, AreNamedAndNotStored) {
  tool_.cut = {L"General.reg"};
  CheckOnly({Options});
  const auto report = ExportCut();
  EXPECT_EQ(report.package.outcome, ArchiveResult::kDone);
  ASSERT_EQ(report.registryFileProblems.size(), 1U);
  EXPECT_EQ(report.registryFileProblems.begin()->first, Key(L"\\General"));
  EXPECT_FALSE(report.registryFileProblems.begin()->second.empty());
  EXPECT_FALSE(Holds(L"Options\\General.reg"));
  EXPECT_TRUE(Holds(L"Options\\Point Snap.reg"));
}

TEST_F(CutRegistryFiles, OfAToolThatFailedAreNotStoredHoweverTheyLook) {
  tool_.cut = {L"General.reg"};
  tool_.missingBytes = 0;
  tool_.fails = true;
  CheckOnly({Options});
  const auto report = ExportCut();
  EXPECT_EQ(report.registryFileProblems,
            (RegistryFileProblems{{Key(L"\\General"), L"is left of an export that failed"}}));
  EXPECT_FALSE(Holds(L"Options\\General.reg"));
}

TEST_F(CutRegistryFiles, LeaveTheOldPackageWhenNothingElseIsThere) {
  machine_->PutFile(PackagePath(), kOldPackage);
  CheckOnly({Options, Register});
  const auto report = ExportCut();
  EXPECT_EQ(report.refusal, L"nothing of what is there could be stored");
  EXPECT_EQ(report.registryFileProblems.size(), 4U);
  EXPECT_EQ(machine_->FileBytes(PackagePath()), kOldPackage);
}

TEST_F(ExportTrouble, RegistryFileOfAnUnpackedPackageIsNotTakenForAKeys) {
  machine_->PutFile(context_.stagingFolder + L"Grid.reg", "REGEDIT4\r\n");
  machine_->PutFile(context_.stagingFolder + L"Model.reg\\x.txt", "x");
  CheckOnly({Options});
  Export();
  EXPECT_EQ(EntryNames().size(), 4U);
  EXPECT_FALSE(Entries().contains(L"Options\\Grid.reg"));
}

}  // namespace
}  // namespace carrovan
