// Whole runs with the n-th call of one port failing, for every n: once, and from there on.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iostream>
#include <map>

#include "environment/installed_versions.h"
#include "environment/version_folders.h"
#include "package/export_run.h"
#include "package/import_run.h"
#include "package/legacy_import.h"
#include "package/staging_folder.h"
#include "reset/reset_run.h"
#include "tests/package/swept_machine.h"
#include "tests/support/category_checklist.h"
#include "tests/support/faulty_machine.h"
#include "tests/support/import_face.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr RegistryHive kUser = RegistryHive::kCurrentUser;
constexpr RegistryHive kMachine = RegistryHive::kLocalMachine;

// Where the swept export puts its package, and what lies there before.
const std::wstring kBackup = L"C:\\Users\\u\\Documents\\backup.ucex";
constexpr char kOldPackage[] = "the user's older package, which must never be lost";

class SilentLog : public LineLog {
 public:
  void WriteLine(std::wstring_view) override {}
};

// One run from the opening of the program to its end, on a machine that may fail.
class SweptRun {
 public:
  explicit SweptRun(Fault& fault) : faulty_(machine_.Ports(), fault) {}

  void Import() {
    if (!Begin()) return;
    state_.package.path = kPackage;
    SelectTargetVersion(state_, context_, L"2026");
    ImportFace face(Run(), view_);
    CategoryChecklist tree;
    if (face.EnterCategories(tree) != ImportFace::Entry::kReady) return;
    face.Apply(tree);
    End();
  }

  void ImportLegacy(const std::wstring& package) {
    if (!Begin()) return;
    if (TakeLegacyPackage(Run(), view_, state_, package)) ImportFace(Run(), view_).ApplyLegacy();
    End();
  }

  void Reset() {
    if (!Begin()) return;
    if (!PrepareVersionFolders(context_, ports_)) return view_.ShowMessage(L"no folders");
    report_ =
        RunReset({context_, state_.package, ports_, tool_, observer_}, OfferedOnReset(context_));
    for (const std::wstring& path : report_.unextracted) {
      view_.ShowMessage(TextOfUnextracted(path));
    }
    view_.finishText = ResetFinishText(context_);
    End();
  }

  void ExportOver(const std::string& oldPackage) {
    machine_.files.Put(kBackup, oldPackage);
    Export();
  }

  void ExportNew() {
    machine_.files.PutFolder(RemoveFileSpec(kBackup));
    Export();
  }

  // The run reported what it left undone, or left nothing undone.
  bool HasComplained() const {
    return !report_.IsComplete() || view_.messages.size() > advices_ || !IsExportComplete();
  }
  bool HasFinished() const { return !view_.finishText.empty(); }
  // Reported to the user before a run that succeeds.
  void ExpectAdvices(std::size_t count) { advices_ = count; }

  const SweptMachine& OnMachine() const { return machine_; }
  const PackageState& Package() const { return state_.package; }
  const RunReport& Report() const { return report_; }
  const RecordingView& View() const { return view_; }
  // Nothing of a run that was no export, or that was refused.
  const std::optional<ExportReport>& Exported() const { return export_; }

 private:
  void Export() {
    if (!Begin()) return;
    if (!PrepareVersionFolders(context_, ports_)) return view_.ShowMessage(L"no folders");
    export_ = RunExport({context_, ports_, tool_, observer_}, OfferedOnExport(context_), kBackup);
    view_.finishText = ExportFinishText(kBackup);
    End();
  }

  bool IsExportComplete() const {
    return !export_ || (export_->package.outcome == ArchiveResult::kDone &&
                        export_->package.skipped.empty() && export_->missingKeys.empty() &&
                        export_->registryFileProblems.empty() && export_->emptyCategories.empty());
  }

  bool Begin() {
    if (!LoadProductContext(context_, ports_)) return false;
    EnumerateInstalledVersions(context_, *ports_.registry);
    InitializePackageState(state_.package, context_, ports_);
    if (RenewStagingFolder(context_, ports_)) return true;
    view_.ShowMessage(L"no staging folder");
    return false;
  }

  ImportRun Run() {
    return {context_, state_.package, ports_, tool_, faulty_.Dom(), log_, observer_, report_};
  }

  void End() { DeleteStagingFolder(context_, ports_); }

  SweptMachine machine_;
  FaultyMachine faulty_;
  const Machine ports_ = faulty_.Ports();
  PacedRegistryTool tool_{*ports_.registryTool, *ports_.clock, RegistryToolPace::kWaitForEnd};
  RecordingView view_;
  RunObserver observer_;
  SilentLog log_;
  ProductContext context_;
  WizardState state_;
  RunReport report_;
  std::optional<ExportReport> export_;
  std::size_t advices_ = 0;
};

using Play = void (*)(SweptRun&);

bool IsBelow(const std::wstring& path, const std::wstring& folder) {
  return EqualsIgnoringAsciiCase(path.substr(0, folder.size()), folder);
}

// A package folder that kept its old version's name is laid over that version: when it could not be
// renamed, which was reported, or when the description does not say which version it is.
bool IsMended(const SweptRun& run) {
  if (run.Package().internalVersion == L"Please check the file.") return false;
  return std::ranges::none_of(run.Report().problems, [](const std::wstring& problem) {
    return problem.starts_with(L"Not mended: ");
  });
}

// Everything that no run may touch: other folders, another version's, another product's keys.
void ExpectNothingOutsideChanged(const SweptRun& run) {
  std::vector<std::wstring> guarded = {kAppData + L"Local\\Other", kAppData + L"Roaming\\Other"};
  if (IsMended(run)) {
    guarded.push_back(kAppData + L"Local\\Vantric\\VANTRIC\\27.0");
    guarded.push_back(kAppData + L"Roaming\\Vantric\\VANTRIC\\27.0");
  }
  for (const std::wstring& change : run.OnMachine().files.changes) {
    const std::wstring path = change.substr(std::min(change.find(L"C:\\"), change.size()));
    EXPECT_TRUE(IsBelow(path, kAppData) || path == kBackup) << ToUtf8(change);
    for (const std::wstring& folder : guarded) {
      EXPECT_FALSE(IsBelow(path, folder)) << ToUtf8(change);
    }
  }
  static const SweptMachine untouched;
  const MemoryRegistry& registry = run.OnMachine().registry;
  if (IsMended(run)) {
    EXPECT_EQ(registry.Text(kUser, kOlderKey), untouched.registry.Text(kUser, kOlderKey));
  }
  EXPECT_EQ(registry.Text(kMachine), untouched.registry.Text(kMachine));
  EXPECT_EQ(registry.Text(kUser, L"SOFTWARE\\Other"),
            untouched.registry.Text(kUser, L"SOFTWARE\\Other"));
}

// What a user has after the run, without what only the run itself uses.
std::map<std::wstring, std::string> StateOf(const SweptMachine& machine) {
  auto state = machine.AllFiles(L"C:\\Users");
  std::erase_if(state,
                [](const auto& file) { return IsBelow(file.first, kAppData + L"Local\\Temp"); });
  state[L"registry"] = ToUtf8(machine.registry.Text(kUser));
  return state;
}

// The items of a package; nothing when there is none.
using Items = std::map<std::wstring, std::string>;
std::optional<Items> ItemsOf(const SweptMachine& machine, const std::wstring& path) {
  MemoryFiles files = machine.files;
  const auto archive = MemoryArchives(files).Open(path);
  if (!archive) return std::nullopt;
  Items items;
  for (std::size_t i = 0; const auto item = archive->Item(i); ++i) {
    EXPECT_EQ(archive->Extract(i, L"C:\\extracted"), ArchiveResult::kDone);
    items[item->name] = files.Bytes(L"C:\\extracted");
  }
  return items;
}

const char* NameOf(FaultyPort port) {
  constexpr const char* kNames[] = {"files",    "registry", "registry editor", "folders", "guids",
                                    "profiles", "archives", "interpreter",     "user",    "dom"};
  return kNames[static_cast<int>(port)];
}

class FaultSweep : public testing::Test {
 protected:
  // Runs with every fault there is. A run without a fault ends with the finish text and `advices`
  // messages.
  void Sweep(const char* name, Play play, std::size_t advices) {
    advices_ = advices;
    for (const FaultyPort port : kFaultyPorts) {
      for (const bool lasts : {false, true}) SweepPort(play, port, lasts);
    }
    std::cout << name << ": " << faults_ << " faults tried, " << silent_
              << " passed over without a word\n";
    RecordProperty("faults", static_cast<int>(faults_));
    EXPECT_GT(faults_, 50u);
  }

  // What else must hold after each run. `port` had the fault, in one call or for good.
  using Demand = std::function<void(const SweptRun& run, FaultyPort port, bool lasts)>;
  void Demands(Demand demand) { demand_ = std::move(demand); }

  // The machine after a run without a fault.
  const SweptMachine& Undisturbed(Play play) {
    if (!undisturbed_) {
      never_ = std::make_unique<Fault>(FaultyPort::kFiles, 0, false);
      undisturbed_ = std::make_unique<SweptRun>(*never_);
      play(*undisturbed_);
    }
    return undisturbed_->OnMachine();
  }

 private:
  const std::map<std::wstring, std::string>& UndisturbedState(Play play) {
    if (undisturbedState_.empty()) undisturbedState_ = StateOf(Undisturbed(play));
    return undisturbedState_;
  }

  void SweepPort(Play play, FaultyPort port, bool lasts) {
    for (std::size_t nth = 1;; ++nth) {
      SCOPED_TRACE(std::string(NameOf(port)) + (lasts ? " from call " : " at call ") +
                   std::to_string(nth));
      Fault fault(port, nth, lasts);
      SweptRun run(fault);
      run.ExpectAdvices(advices_);
      play(run);
      ExpectNothingOutsideChanged(run);
      EXPECT_TRUE(run.HasFinished() || !run.View().messages.empty());
      if (demand_) demand_(run, port, lasts);
      if (!fault.HasStruck()) return ExpectWhole(run);
      ++faults_;
      if (run.HasFinished() && !run.HasComplained() &&
          StateOf(run.OnMachine()) != UndisturbedState(play)) {
        ++silent_;
      }
      if (HasFailure()) return;
    }
  }

  void ExpectWhole(const SweptRun& run) {
    EXPECT_TRUE(run.HasFinished());
    EXPECT_FALSE(run.HasComplained());
    for (const std::wstring& problem : run.Report().problems) ADD_FAILURE() << ToUtf8(problem);
    for (const std::wstring& message : run.View().messages) {
      if (advices_ == 0) ADD_FAILURE() << ToUtf8(message);
    }
    EXPECT_TRUE(run.OnMachine().files.Names(kAppData + L"Local\\Temp").empty());
  }

  Demand demand_;
  std::size_t advices_ = 0;
  std::size_t faults_ = 0;
  std::size_t silent_ = 0;
  std::unique_ptr<Fault> never_;
  std::unique_ptr<SweptRun> undisturbed_;
  std::map<std::wstring, std::string> undisturbedState_;
};

TEST_F(FaultSweep, ImportOfAnotherReleaseWithAllCategories) {
  const Play play = [](SweptRun& run) { run.Import(); };
  Sweep("import", play, 1);
  const SweptMachine& machine = Undisturbed(play);
  const std::wstring folder = kAppData + L"Local\\Vantric\\VANTRIC\\28.0\\en-us\\ToolBox\\";
  EXPECT_EQ(machine.files.Bytes(folder + L"packaged.dat"), "of packaged");
  EXPECT_FALSE(machine.files.Has(folder + L"own.dat"));
  EXPECT_NE(machine.registry.Root(kUser).Find(kLiveKey)->Value(L"packaged"), nullptr);
}

TEST_F(FaultSweep, LegacyImportOfACustomization) {
  const Play play = [](SweptRun& run) { run.ImportLegacy(kScenePackage); };
  Sweep("legacy import", play, 0);
  EXPECT_EQ(Undisturbed(play).files.Bytes(kAppData + L"Roaming\\Vantric\\VANTRIC\\28.0\\en-us\\"
                                                     L"Customization\\VANTRIC-Scene.xml"),
            "<s>VANTRIC28.0</s>\r\n");
}

TEST_F(FaultSweep, LegacyImportOfOptions) {
  const Play play = [](SweptRun& run) { run.ImportLegacy(kOptionsPackage); };
  Sweep("legacy import of options", play, 0);
  EXPECT_EQ(*Undisturbed(play).registry.Root(kUser).Find(kLiveKey + L"\\General")->Value(L"own"),
            MakeStringValue(L"own", L"2026"));
}

TEST_F(FaultSweep, ResetOfAllCategories) {
  const Play play = [](SweptRun& run) { run.Reset(); };
  Sweep("reset", play, 0);
  const SweptMachine& machine = Undisturbed(play);
  EXPECT_FALSE(machine.files.Has(kAppData + L"Local\\Vantric\\VANTRIC\\28.0\\en-us\\ToolBox"));
  EXPECT_NE(machine.registry.Root(kUser).Find(kLiveKey + L"\\Grid")->Value(L"factory"), nullptr);
}

// After every export, whatever failed.
class ExportSweep : public FaultSweep {
 protected:
  void SweepExport(const char* name, Play play, const std::optional<std::string>& old) {
    const auto whole = ItemsOf(Undisturbed(play), kBackup);
    ASSERT_TRUE(whole);
    ASSERT_GT(whole->size(), 20U);
    Demands([&](const SweptRun& run, FaultyPort port, bool lasts) {
      const bool written =
          run.Exported() && run.Exported()->package.outcome == ArchiveResult::kDone;
      if (written) return ExpectPackage(run, port, *whole);
      const MemoryFiles& files = run.OnMachine().files;
      // Where nothing can be removed any more, the path that was taken stays.
      if (!old && lasts && files.Bytes(kBackup).empty()) return;
      EXPECT_EQ(files.Bytes(kBackup), old.value_or("<missing>"));
    });
    Sweep(name, play, 0);
  }

 private:
  // The new package is one that imports take, each item is whole, and what is not in it
  // was reported.
  static void ExpectPackage(const SweptRun& run, FaultyPort port, const Items& whole) {
    const auto items = ItemsOf(run.OnMachine(), kBackup);
    ASSERT_TRUE(items);
    EXPECT_TRUE(items->contains(L"config.ini"));
    for (const auto& [name, bytes] : *items) {
      const auto expected = whole.find(name);
      ASSERT_NE(expected, whole.end()) << ToUtf8(name);
      EXPECT_EQ(bytes, expected->second) << ToUtf8(name);
    }
    // Whether a folder is there is a question that cannot fail, only be answered wrongly.
    if (port == FaultyPort::kFiles || port == FaultyPort::kRegistryReader) return;
    EXPECT_TRUE(items->size() == whole.size() || run.HasComplained());
  }
};

TEST_F(ExportSweep, OverAnOlderPackage) {
  SweepExport(
      "export", [](SweptRun& run) { run.ExportOver(kOldPackage); }, kOldPackage);
}

TEST_F(ExportSweep, OfANewPackage) {
  SweepExport(
      "export of a new package", [](SweptRun& run) { run.ExportNew(); }, std::nullopt);
}

}  // namespace
}  // namespace carrovan
