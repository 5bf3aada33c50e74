#include "guard/guarded_run.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "guard/run_lock.h"
#include "restore/restore_point.h"
#include "tests/support/memory_machine.h"
#include "text/text.h"

namespace carrovan {
namespace {

const std::wstring kLocal = L"C:\\Users\\u\\AppData\\Local";
const std::wstring kData = kLocal + L"\\Vantric\\a.txt";
const std::wstring kAbandoned = kLocal + L"\\Temp\\00112233-4455-6677-8899-AABBCCDDEEFF";

class CollectedLog : public LineLog {
 public:
  void WriteLine(std::wstring_view line) override { lines.emplace_back(line); }

  std::vector<std::wstring> lines;
};

class GuardedRunTest : public testing::Test {
 protected:
  GuardedRunTest() {
    machine_.folders.temp = kLocal + L"\\Temp\\";
    machine_.files.Put(kData, "before");
    machine_.files.Put(kAbandoned + L"\\~carrovan.lock", "");
  }

  GuardReport RunChanging(const GuardChoice& choice) {
    return RunGuarded(machine_.Ports(), choice, {L"import", L"2026", L"x.ucex"}, log_,
                      [&](const Machine& ports, LineLog& log) {
                        sawOther_.push_back(OtherIsRefused());
                        log.WriteLine(L"\x4E2D 1");
                        log.WriteLine(L"line 2");
                        EXPECT_EQ(ports.files->WriteBytes(kData, "after"), kSystemOk);
                        return RunOutcome();
                      });
  }

  bool OtherIsRefused() { return RunLock::Take(machine_.Ports(), L"reset").object == nullptr; }

  MemoryMachine machine_;
  CollectedLog log_;
  std::vector<bool> sawOther_;  // for each time that the run was run: whether others were kept out
};

TEST_F(GuardedRunTest, KeepsOthersOutToItsEnd) {
  GuardChoice verified;
  verified.verify = true;
  GuardChoice bare;
  bare.noRestorePoint = true;
  for (const GuardChoice& choice : {GuardChoice(), verified, bare}) {
    sawOther_.clear();
    EXPECT_TRUE(RunChanging(choice).WasCarriedOut());
    EXPECT_EQ(sawOther_, std::vector<bool>(choice.verify ? 2 : 1, true));
    EXPECT_FALSE(OtherIsRefused());
  }
}

TEST_F(GuardedRunTest, IsNotBegunWhileAnotherIsAtWork) {
  const auto other = RunLock::Take(machine_.Ports(), L"reset");
  machine_.files.changes.clear();
  for (const bool noRestorePoint : {false, true}) {
    GuardChoice choice;
    choice.noRestorePoint = noRestorePoint;
    const GuardReport report = RunChanging(choice);
    EXPECT_EQ(report.failure, GuardFailure::kAnotherRun);
    EXPECT_EQ(report.reason, L"carrovan-tests reset, process 42");
    EXPECT_FALSE(report.WasCarriedOut());
  }
  EXPECT_TRUE(sawOther_.empty());
  EXPECT_TRUE(machine_.files.changes.empty()) << ToUtf8(machine_.files.changes.front());
}

TEST_F(GuardedRunTest, RemovesWhatAKilledRunLeft) {
  RunChanging({});
  EXPECT_FALSE(machine_.files.Has(kAbandoned));
}

TEST_F(GuardedRunTest, TrialRunsBesideAnotherRunAndRemovesNothing) {
  const auto other = RunLock::Take(machine_.Ports(), L"reset");
  GuardChoice choice;
  choice.dryRun = true;
  const GuardReport report = RunChanging(choice);
  EXPECT_TRUE(report.WasCarriedOut());
  EXPECT_EQ(report.changes.files.size(), 1u);
  EXPECT_EQ(machine_.files.Bytes(kData), "before");
  EXPECT_TRUE(machine_.files.Has(kAbandoned));
}

TEST_F(GuardedRunTest, TrialKeepsNobodyOut) {
  GuardChoice choice;
  choice.dryRun = true;
  RunChanging(choice);
  EXPECT_EQ(sawOther_, std::vector<bool>{false});
}

TEST_F(GuardedRunTest, LetsOthersInWhenItWasRefusedOrCouldNotBeBegun) {
  RunGuarded(machine_.Ports(), {}, {L"import", L"2026", {}}, log_, [](const Machine&, LineLog&) {
    RunOutcome outcome;
    outcome.refusals = {L"no"};
    return outcome;
  });
  EXPECT_FALSE(OtherIsRefused());
  machine_.files.fault = [](const std::string& operation, const std::wstring&) {
    return operation == "append" ? kSystemDiskFull : kSystemOk;
  };
  EXPECT_EQ(RunChanging({}).failure, GuardFailure::kNoRestorePoint);
  EXPECT_FALSE(OtherIsRefused());
}

TEST_F(GuardedRunTest, LetsOthersInWhenItBreaksOff) {
  EXPECT_THROW(RunGuarded(machine_.Ports(), {}, {L"import", L"2026", {}}, log_,
                          [](const Machine&, LineLog&) -> RunOutcome {
                            throw std::runtime_error("broken off");
                          }),
               std::runtime_error);
  EXPECT_FALSE(OtherIsRefused());
}

TEST_F(GuardedRunTest, LogGoesOnAndStaysInTheRestorePoint) {
  const std::vector<std::wstring> lines{L"\x4E2D 1", L"line 2"};
  const GuardReport report = RunChanging({});
  EXPECT_EQ(log_.lines, lines);
  const std::wstring point = *RestoreRoot(machine_.folders) + L"\\" + report.restorePoint;
  EXPECT_EQ(machine_.files.Bytes(point + L"\\log.txt"), "\xE4\xB8\xAD 1\r\nline 2\r\n");
}

TEST_F(GuardedRunTest, LogThatCannotBeKeptDoesNotHarmTheRestorePoint) {
  machine_.files.fault = [](const std::string& operation, const std::wstring& path) {
    return operation == "append" && path.ends_with(L"log.txt") ? kSystemDiskFull : kSystemOk;
  };
  const GuardReport report = RunChanging({});
  const auto point =
      ReadRestorePoint(machine_.files, *RestoreRoot(machine_.folders), report.restorePoint);
  ASSERT_TRUE(point);
  EXPECT_EQ(point->state, PointState::kFinished);
}

TEST_F(GuardedRunTest, LogOfATrialGoesOnOnce) {
  GuardChoice choice;
  choice.dryRun = true;
  RunChanging(choice);
  EXPECT_EQ(log_.lines.size(), 2u);
  choice = {};
  choice.verify = true;
  RunChanging(choice);
  EXPECT_EQ(log_.lines.size(), 4u);
}

TEST_F(GuardedRunTest, TrialIsLookedAtOnceBeforeAnythingChanges) {
  for (const bool dryRun : {true, false}) {
    machine_.files.Put(kData, "before");
    std::vector<std::string> seen;
    GuardChoice choice;
    choice.dryRun = dryRun;
    choice.onTrial = [&](const Trial& trial) {
      std::string before;
      std::string after;
      EXPECT_EQ(trial.before.files->ReadBytes(kData, before), kSystemOk);
      EXPECT_EQ(trial.after.files->ReadBytes(kData, after), kSystemOk);
      EXPECT_EQ(trial.changes.files.size(), 1u);
      seen.push_back(before + " " + after);
    };
    const GuardReport report = RunChanging(choice);
    EXPECT_EQ(seen, std::vector<std::string>{"before after"});
    EXPECT_EQ(machine_.files.Bytes(kData), dryRun ? "before" : "after");
    EXPECT_EQ(report.foreseen, 0u);
  }
}

TEST_F(GuardedRunTest, RestorePointHoldsNothingOfTheLock) {
  const GuardReport report = RunChanging({});
  const auto point =
      ReadRestorePoint(machine_.files, *RestoreRoot(machine_.folders), report.restorePoint);
  ASSERT_TRUE(point);
  ASSERT_EQ(point->files.size(), 1u);
  EXPECT_EQ(point->files[0].path, kData);
  EXPECT_EQ(machine_.files.Names(kLocal + L"\\Carrovan"), std::vector<std::wstring>{L"Restore"});
}

}  // namespace
}  // namespace carrovan
