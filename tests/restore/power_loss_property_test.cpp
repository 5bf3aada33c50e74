// Whatever a machine does when its power goes: what was there before can be had again.
#include <gtest/gtest.h>

#include <iostream>

#include "package/package_writer.h"
#include "restore/prune.h"
#include "restore/recorded_machine.h"
#include "restore/restore_point.h"
#include "restore/undo_run.h"
#include "tests/support/from_environment.h"
#include "tests/support/lossy_machine.h"
#include "tests/support/machine_snapshot.h"
#include "tests/support/random_run.h"
#include "text/path_text.h"

namespace carrovan {
namespace {

// Wine takes its time for every document.
#ifdef CARROVAN_WIDE_MAIN
constexpr unsigned kCases = 200;
#else
constexpr unsigned kCases = 2000;
#endif

constexpr std::size_t kNever = std::size_t{1} << 30;

constexpr wchar_t kPackage[] = L"C:\\Users\\u\\kept.ucex";

// All but the restore points, and what a run leaves in folders of its own, which the next one
// sweeps away.
MachineSnapshot Snapshot(const RandomMachine& machine) {
  const std::wstring own = L"C:\\Users\\u\\AppData\\Local\\Carrovan";
  const std::wstring temporary = WithoutTrailingBackslashes(*machine.folders.TempPath());
  MachineSnapshot snapshot = TakeSnapshot(machine);
  std::erase_if(snapshot.files, [&](const auto& entry) {
    return IsAtOrBelow(entry.second.path, own) || IsAtOrBelow(entry.second.path, temporary);
  });
  for (auto& [folded, key] : snapshot.keys) key.clear();
  for (auto& [folded, value] : snapshot.values) value.key = FromUtf16(folded.second);
  return snapshot;
}

// Plays what a random machine asks for, guarded as the faces guard it.
void PlayGuarded(const RandomMachine& plan, const Machine& ports) {
  const auto recorder = ChangeRecorder::Begin(ports, {L"import", L"", L""}).object;
  if (!recorder) return;
  RecordedMachine recorded(ports, *recorder);
  PlayRandomRun(plan, recorded.Ports());
  recorder->End();
}

UndoReport UndoNewest(const RandomMachine& machine, const Machine& ports) {
  const std::wstring root = *RestoreRoot(machine.folders);
  // A random package may name keys and folders of anybody.
  UndoChoice choice;
  choice.trusted = true;
  for (const std::wstring& id : RestorePointIds(*ports.files, root)) {
    const auto point = ReadRestorePoint(*ports.files, root, id);
    if (point) return UndoChanges(*point, choice, ports);
  }
  return {};
}

class PowerLoss : public testing::Test {
 protected:
  using Work = std::function<void(RandomMachine& machine, const Machine& ports)>;

  // Does the work whole to count its operations, and once more with a loss of power somewhere on
  // the way or right behind it, after which the machine is what is left. True when it came to its
  // end.
  bool LosePowerDuring(const Work& work, RandomMachine& machine, unsigned seed) {
    std::size_t operations = 0;
    {
      RandomMachine whole(seed);
      if (prepare_) prepare_(whole);
      LossyMachine supplied(whole, kNever);
      work(whole, supplied.Ports());
      operations = supplied.Supply().Operations();
      supplied.Keep();
      done_ = Snapshot(whole);
      doneState_ = StateOfPoint(whole);
    }
    std::mt19937 random(seed);
    const std::size_t last = seed % 4 == 0 ? operations : random() % (operations + 1);
    LossyMachine supplied(machine, last);
    work(machine, supplied.Ports());
    supplied.Lose(random);
    return last == operations;
  }

  PointState StateOfPoint(const RandomMachine& machine) {
    const std::wstring root = *RestoreRoot(machine.folders);
    const auto ids = RestorePointIds(machine.files, root);
    const auto point = ids.empty() ? std::nullopt : ReadRestorePoint(machine.files, root, ids[0]);
    // A run that changed nothing leaves no point.
    return point ? point->state : PointState::kFinished;
  }

  static void ExpectSame(const MachineSnapshot& expected, const MachineSnapshot& left) {
    if (left == expected) return;
    for (const std::string& line : LinesOf(DifferenceOf(expected, left))) ADD_FAILURE() << line;
    ADD_FAILURE() << "another state";
  }

  void ExpectUndone(RandomMachine& machine, const MachineSnapshot& before) {
    const std::wstring root = *RestoreRoot(machine.folders);
    for (const std::wstring& id : RestorePointIds(machine.files, root)) {
      const auto point = ReadRestorePoint(machine.files, root, id);
      ASSERT_TRUE(point);
      EXPECT_EQ(point->damage, L"");
    }
    const UndoReport report = UndoNewest(machine, machine.Ports());
    for (const auto* lines : {&report.kept, &report.problems, &report.refused}) {
      for (const std::wstring& line : *lines) ADD_FAILURE() << ToUtf8(line);
    }
    ExpectSame(before, Snapshot(machine));
  }

  // Goes through the seeds until one fails.
  void ForEachSeed(const std::function<void(unsigned seed)>& check) {
    const unsigned first = FromEnvironment("CARROVAN_POWER_SEED", 1);
    const unsigned cases = FromEnvironment("CARROVAN_POWER_CASES", kCases) / 5;
    for (unsigned seed = first; seed < first + cases && !HasFailure(); ++seed) {
      SCOPED_TRACE("CARROVAN_POWER_SEED=" + std::to_string(seed));
      check(seed);
    }
    std::cout << cases << " losses of power\n";
  }

  std::function<void(RandomMachine& machine)> prepare_;
  // After the whole work.
  MachineSnapshot done_;
  PointState doneState_ = PointState::kFinished;
};

TEST_F(PowerLoss, OfARunLeavesWhatAnUndoBringsBack) {
  ForEachSeed([this](unsigned seed) {
    RandomMachine machine(seed);
    const MachineSnapshot before = Snapshot(machine);
    const bool isDone = LosePowerDuring(
        [](RandomMachine& plan, const Machine& ports) { PlayGuarded(plan, ports); }, machine, seed);
    if (isDone) {
      ExpectSame(done_, Snapshot(machine));
      if (done_ != before) {
        EXPECT_EQ(StateOfPoint(machine), PointState::kFinished);
      }
    }
    ExpectUndone(machine, before);
    ExpectUndone(machine, before);
  });
}

TEST_F(PowerLoss, AfterARunLosesNothingOfWhatItWroteItself) {
  const std::wstring path = L"C:\\Users\\u\\AppData\\Local\\Vantric\\a.txt";
  ForEachSeed([&path](unsigned seed) {
    MemoryMachine machine;
    machine.files.PutFolder(L"C:\\Users\\u\\AppData\\Local\\Temp");
    machine.files.Put(path, "what was there before the run");
    LossyMachine supplied(machine, kNever);
    const auto recorder = ChangeRecorder::Begin(supplied.Ports(), {L"reset", L"", L""}).object;
    ASSERT_TRUE(recorder);
    RecordedMachine recorded(supplied.Ports(), *recorder);
    const Machine ports = recorded.Ports();
    EXPECT_EQ(ports.files->WriteBytes(path, "what the run has written in its place"), kSystemOk);
    recorder->End();
    std::mt19937 random(seed);
    supplied.Lose(random);
    EXPECT_EQ(machine.files.Bytes(path), "what the run has written in its place");
  });
}

// Without a restore point nothing brings back what was there, but what the run has put in place is
// there when the folder is gone in which it lay before.
TEST_F(PowerLoss, AfterARunWithoutARestorePointLeavesWhatItPutInPlace) {
  ForEachSeed([this](unsigned seed) {
    RandomMachine machine(seed);
    const MachineSnapshot before = Snapshot(machine);
    const bool isDone =
        LosePowerDuring([](RandomMachine& plan,
                           const Machine& ports) { static_cast<void>(PlayRandomRun(plan, ports)); },
                        machine, seed);
    // A reset puts nothing in place that cannot be had from the product once more.
    if (!isDone || machine.Kind() == RandomMachine::Run::kReset) return;
    const MachineSnapshot left = Snapshot(machine);
    for (const auto& [folded, file] : done_.files) {
      const auto old = before.files.find(folded);
      const auto now = left.files.find(folded);
      const bool wasThere = old != before.files.end() && old->second.bytes == file.bytes;
      if (wasThere || file.isFolder) continue;
      EXPECT_TRUE(now != left.files.end() && now->second.bytes == file.bytes) << ToUtf8(file.path);
    }
  });
}

TEST_F(PowerLoss, OfAnUndoLeavesWhatASecondOneBringsBack) {
  prepare_ = [](RandomMachine& machine) { PlayGuarded(machine, machine.Ports()); };
  ForEachSeed([this](unsigned seed) {
    RandomMachine machine(seed);
    const MachineSnapshot before = Snapshot(machine);
    prepare_(machine);
    const bool isDone =
        LosePowerDuring([](RandomMachine& plan,
                           const Machine& ports) { static_cast<void>(UndoNewest(plan, ports)); },
                        machine, seed);
    if (isDone) {
      ExpectSame(done_, Snapshot(machine));
      EXPECT_EQ(StateOfPoint(machine), doneState_);
    }
    ExpectUndone(machine, before);
  });
}

TEST_F(PowerLoss, OfAPruningLeavesEachRestorePointWholeOrGone) {
  prepare_ = [](RandomMachine& machine) { PlayGuarded(machine, machine.Ports()); };
  ForEachSeed([this](unsigned seed) {
    RandomMachine machine(seed);
    const MachineSnapshot before = Snapshot(machine);
    prepare_(machine);
    const MachineSnapshot changed = Snapshot(machine);
    LosePowerDuring(
        [](RandomMachine& plan, const Machine& ports) {
          static_cast<void>(
              PruneRestorePoints(*ports.files, *ports.clock, *RestoreRoot(plan.folders), {}));
        },
        machine, seed);
    EXPECT_EQ(Snapshot(machine), changed);
    if (!RestorePointIds(machine.files, *RestoreRoot(machine.folders)).empty()) {
      ExpectUndone(machine, before);
    }
  });
}

TEST_F(PowerLoss, OfAnExportLeavesTheOldPackageOrTheNewOne) {
  prepare_ = [](RandomMachine& machine) { machine.files.Put(kPackage, "the old package"); };
  ForEachSeed([this](unsigned seed) {
    RandomMachine machine(seed);
    prepare_(machine);
    const MachineSnapshot before = Snapshot(machine);
    bool isDone = false;
    std::string written;
    LosePowerDuring(
        [&](RandomMachine& plan, const Machine& ports) {
          ProductContext context;
          RunObserver observer;
          const std::wstring sources[] = {*plan.folders.LocalAppData(),
                                          *plan.folders.RoamingAppData()};
          const PackageReport report =
              WritePackage(context, ports, sources, kPackage, ArchivePurpose::kKeep, observer);
          isDone = report.outcome == ArchiveResult::kDone && report.skipped.empty();
          if (written.empty()) static_cast<void>(ports.files->ReadBytes(kPackage, written));
        },
        machine, seed);
    const std::string left = machine.files.Bytes(kPackage);
    EXPECT_TRUE(left == written || left == "the old package");
    if (isDone) {
      EXPECT_EQ(left, written) << "what was reported is lost";
    }
    machine.files.Put(kPackage, "the old package");
    EXPECT_EQ(Snapshot(machine), before);
  });
}

}  // namespace
}  // namespace carrovan
