#include "guard/run_lock.h"

#include <gtest/gtest.h>

#include "tests/support/memory_machine.h"

namespace carrovan {
namespace {

const std::wstring kLocal = L"C:\\Users\\u\\AppData\\Local";
const std::wstring kOwn = kLocal + L"\\Carrovan";
const std::wstring kLock = kOwn + L"\\run.lock";
const std::wstring kOwner = kOwn + L"\\run.owner";

// Lets something happen in each pause.
class EventfulClock : public RecordingClock {
 public:
  std::function<void()> inPause;

  void Pause(std::chrono::milliseconds duration) override {
    RecordingClock::Pause(duration);
    if (inPause) inPause();
  }
};

class RunLockTest : public testing::Test {
 protected:
  RunLockTest() { machine_.files.PutFolder(kLocal); }

  OrReason<RunLock> TakeAs(const ProcessFacts& process, const std::wstring& verb) {
    FixedProcess self;
    self.facts = process;
    Machine ports = With<&Machine::self>(machine_.Ports(), self);
    return RunLock::Take(With<&Machine::clock>(ports, clock_), verb);
  }
  OrReason<RunLock> TakeFirst() { return TakeAs({L"carrovan-cli", 1234}, L"import"); }
  OrReason<RunLock> TakeSecond() { return TakeAs({L"carrovan", 99}, L"undo"); }

  // What a process leaves that held the lock when it was killed.
  void LeaveAsKilled() {
    machine_.files.Put(kLock, "");
    machine_.files.Put(kOwner, "carrovan-cli reset, process 7");
  }

  // From now on an operation fails on one path.
  void Fail(const std::string& operation, const std::wstring& path, SystemCode code) {
    machine_.files.fault = [=](const std::string& asked, const std::wstring& at) {
      return asked == operation && at == path ? code : kSystemOk;
    };
  }

  std::size_t Pauses() const { return clock_.pauses.size(); }

  MemoryMachine machine_;
  EventfulClock clock_;
};

TEST_F(RunLockTest, SecondRunIsRefusedAtOnceAndTheFirstIsNamed) {
  const auto first = TakeFirst();
  ASSERT_TRUE(first.object);
  const auto second = TakeSecond();
  EXPECT_FALSE(second.object);
  EXPECT_EQ(second.reason, L"carrovan-cli import, process 1234");
  EXPECT_EQ(Pauses(), 0u);
}

TEST_F(RunLockTest, RunAfterAnotherOneHasTheLock) {
  TakeFirst();
  const auto second = TakeSecond();
  ASSERT_TRUE(second.object);
  EXPECT_EQ(TakeFirst().reason, L"carrovan undo, process 99");
}

TEST_F(RunLockTest, RefusedRunLeavesTheLockToItsOwner) {
  const auto first = TakeFirst();
  TakeSecond();
  EXPECT_FALSE(TakeSecond().object);
  EXPECT_EQ(machine_.files.Bytes(kOwner), "carrovan-cli import, process 1234");
}

TEST_F(RunLockTest, NothingIsLeftWhenItIsFreed) {
  TakeFirst();
  EXPECT_EQ(machine_.files.Names(kLocal), std::vector<std::wstring>());
}

TEST_F(RunLockTest, FolderThatWasThereStays) {
  machine_.files.PutFolder(kOwn);
  TakeFirst();
  EXPECT_EQ(machine_.files.Names(kLocal), std::vector<std::wstring>{L"Carrovan"});
  EXPECT_EQ(machine_.files.Names(kOwn), std::vector<std::wstring>());
}

TEST_F(RunLockTest, FolderIntoWhichTheRunPutSomethingStays) {
  {
    const auto lock = TakeFirst();
    machine_.files.Put(kOwn + L"\\Restore\\x", "x");
  }
  EXPECT_EQ(machine_.files.Names(kOwn), std::vector<std::wstring>{L"Restore"});
}

TEST_F(RunLockTest, LockOfAKilledRunIsFreeAndItsNameIsForgotten) {
  LeaveAsKilled();
  const auto lock = TakeFirst();
  ASSERT_TRUE(lock.object);
  EXPECT_EQ(TakeSecond().reason, L"carrovan-cli import, process 1234");
}

TEST_F(RunLockTest, NameOfAKilledRunDoesNotStandForOneThatCannotNoteItsOwn) {
  LeaveAsKilled();
  Fail("write", kOwner, kSystemDiskFull);
  const auto lock = TakeFirst();
  ASSERT_TRUE(lock.object);
  const auto second = TakeSecond();
  EXPECT_FALSE(second.object);
  EXPECT_EQ(second.reason, L"an unknown program");
}

TEST_F(RunLockTest, NameThatIsNotYetNotedIsWaitedForAShortTime) {
  machine_.files.Put(kLock, "");
  machine_.files.held = {L"C:\\USERS\\U\\APPDATA\\LOCAL\\CARROVAN\\RUN.LOCK"};
  clock_.inPause = [&] { machine_.files.Put(kOwner, "carrovan-cli reset, process 7"); };
  EXPECT_EQ(TakeFirst().reason, L"carrovan-cli reset, process 7");
  EXPECT_EQ(Pauses(), 1u);
}

TEST_F(RunLockTest, TextThatIsNoNameIsNotShown) {
  const auto lock = TakeFirst();
  for (const std::string& text :
       {std::string(), std::string("two\nlines"), std::string("\x1B[2J"), std::string(400, 'x')}) {
    machine_.files.Put(kOwner, text);
    EXPECT_EQ(TakeSecond().reason, L"an unknown program") << testing::PrintToString(text);
  }
}

TEST_F(RunLockTest, RunThatIsJustEndingIsWaitedFor) {
  for (const SystemCode code : {kAccessDenied, kPathNotFound, kFileNotFound, kSharingViolation}) {
    Fail("hold", kLock, code);
    clock_.inPause = [&] { machine_.files.fault = nullptr; };
    const auto lock = TakeFirst();
    ASSERT_TRUE(lock.object) << code;
    EXPECT_FALSE(TakeSecond().object) << code;
  }
}

TEST_F(RunLockTest, FolderThatAnotherRunMakesMeanwhileIsShared) {
  machine_.files.fault = [&](const std::string& operation, const std::wstring& path) {
    if (operation == "create folder" && path == kOwn) machine_.files.PutFolder(kOwn);
    return kSystemOk;
  };
  const auto lock = TakeFirst();
  ASSERT_TRUE(lock.object);
  EXPECT_EQ(TakeSecond().reason, L"carrovan-cli import, process 1234");
  EXPECT_EQ(Pauses(), 0u);
}

TEST_F(RunLockTest, FolderThatAnotherRunRemovesMeanwhileIsMadeAgain) {
  bool removed = false;
  machine_.files.fault = [&](const std::string& operation, const std::wstring&) {
    if (operation != "hold" || removed) return kSystemOk;
    removed = true;
    return machine_.files.RemoveFolder(kOwn) == kSystemOk ? kPathNotFound : kGeneralFailure;
  };
  const auto lock = TakeFirst();
  ASSERT_TRUE(lock.object);
  EXPECT_FALSE(TakeSecond().object);
}

TEST_F(RunLockTest, FullDiskKeepsNobodyFromARun) {
  for (const auto& [operation, path] :
       {std::pair(std::string("hold"), kLock), std::pair(std::string("create folder"), kOwn)}) {
    Fail(operation, path, kSystemDiskFull);
    EXPECT_TRUE(TakeFirst().object) << operation;
    EXPECT_EQ(machine_.files.Names(kLocal), std::vector<std::wstring>()) << operation;
  }
  EXPECT_EQ(Pauses(), 0u);
}

TEST_F(RunLockTest, FolderThatIsClosedToTheUserKeepsNobodyFromARun) {
  Fail("hold", kLock, kAccessDenied);
  EXPECT_TRUE(TakeFirst().object);
  EXPECT_LT(Pauses(), 20u);
}

TEST_F(RunLockTest, RunWithoutALockTakesNoneAway) {
  const auto first = TakeFirst();
  Fail("hold", kLock, kSystemDiskFull);
  TakeSecond();
  machine_.files.fault = nullptr;
  EXPECT_EQ(TakeSecond().reason, L"carrovan-cli import, process 1234");
}

TEST_F(RunLockTest, UnknownDataFolderKeepsNobodyFromARun) {
  machine_.folders.local = std::nullopt;
  EXPECT_TRUE(TakeFirst().object);
  EXPECT_TRUE(machine_.files.changes.empty());
}

// Two lasting holders, on the files of a sandbox or of the system itself.
TEST(RunLock, IsTheSameForAllWhoUseAMachine) {
  const auto machine = NewTestMachine();
  FixedFolders folders;
  folders.local = machine->ScratchFolder() + L"Local";
  const Machine ports = With<&Machine::folders>(machine->Ports(), folders);
  const std::wstring self = ports.self->Facts().program;
  {
    const auto first = RunLock::Take(ports, L"import");
    ASSERT_TRUE(first.object);
    const auto second = RunLock::Take(ports, L"undo");
    EXPECT_FALSE(second.object);
    EXPECT_EQ(second.reason, self + L" import, process " + std::to_wstring(ports.self->Facts().id));
  }
  EXPECT_TRUE(RunLock::Take(ports, L"undo").object);
  EXPECT_FALSE(ports.files->Exists(*folders.local + L"\\Carrovan"));
}

}  // namespace
}  // namespace carrovan
