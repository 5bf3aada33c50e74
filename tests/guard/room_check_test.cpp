#include "guard/room_check.h"

#include "guard/guarded_run.h"
#include "tests/restore/restore_fixture.h"

namespace carrovan {
namespace {

// A machine whose disk is nearly full, and a run that takes away a large file.
class RoomCheckTest : public RestoreFixture {
 protected:
  static constexpr std::size_t kLargeBytes = 3'000'000;

  RoomCheckTest() {
    recorder->End();
    machine.files.Put(kData + L"large.bin", std::string(kLargeBytes, 'x'));
  }

  GuardReport RunWith(const GuardChoice& choice) {
    NullLog log;
    return RunGuarded(machine.Ports(), choice, {L"reset", L"2026", L""}, log,
                      [this](const Machine& ports, LineLog&) {
                        ++runs;
                        EXPECT_EQ(ports.files->RemoveFile(kData + L"large.bin"), kSystemOk);
                        return RunOutcome{};
                      });
  }

  bool IsThere() const { return machine.files.Has(kData + L"large.bin"); }

  struct NullLog : LineLog {
    void WriteLine(std::wstring_view) override {}
  };
  int runs = 0;
};

TEST_F(RoomCheckTest, RefusesBeforeTheFirstChangeAndNamesTheBytesThatAreNeeded) {
  machine.files.freeBytes = kLargeBytes;
  const GuardReport report = RunWith({});
  EXPECT_EQ(report.failure, GuardFailure::kNoRestorePoint);
  EXPECT_EQ(report.reason, L"The restore point needs 3004096 bytes, and 3000000 are free in " +
                               kLocal + L"Carrovan\\Restore");
  EXPECT_TRUE(IsThere());
  EXPECT_EQ(runs, 1) << "it was tried out";
  EXPECT_TRUE(RestorePointIds(machine.files, Root()).empty());
}

TEST_F(RoomCheckTest, RunsWhenThereIsJustEnough) {
  machine.files.freeBytes = kLargeBytes + 4096;
  EXPECT_TRUE(RunWith({}).WasCarriedOut());
  EXPECT_FALSE(IsThere());
}

TEST_F(RoomCheckTest, TriesNothingOutWhenThereIsPlenty) {
  machine.files.freeBytes = kLargeBytes + (std::size_t{65} << 20);
  EXPECT_TRUE(RunWith({}).WasCarriedOut());
  EXPECT_EQ(runs, 1);
}

TEST_F(RoomCheckTest, RunsWhenTheFreeRoomCannotBeTold) {
  machine.files.freeBytes = std::nullopt;
  EXPECT_TRUE(RunWith({}).WasCarriedOut());
  EXPECT_FALSE(IsThere());
}

TEST_F(RoomCheckTest, RunsOnAFullDiskWithoutARestorePoint) {
  machine.files.freeBytes = 0;
  GuardChoice choice;
  choice.noRestorePoint = true;
  EXPECT_TRUE(RunWith(choice).WasCarriedOut());
  EXPECT_FALSE(IsThere());
}

}  // namespace
}  // namespace carrovan
