#include "restore/prune.h"

#include "tests/restore/restore_fixture.h"

namespace carrovan {
namespace {

class PruneTest : public RestoreFixture {
 protected:
  PruneTest() {
    recorder->End();
    for (const wchar_t* id :
         {L"2026-03-04T000000Z", L"2026-01-01T000000Z", L"2025-01-01T000000Z"}) {
      machine.files.Put(Root() + L"\\" + id + L"\\" + kJournalName, "12345");
      machine.files.Put(Root() + L"\\" + id + L"\\files\\1", "678");
    }
  }

  PruneReport Prune(std::size_t keep, std::optional<int> olderThanDays = std::nullopt) {
    return PruneRestorePoints(machine.files, machine.clock, Root(), {keep, olderThanDays});
  }

  static std::vector<std::wstring> Removed(const PruneReport& report) {
    std::vector<std::wstring> ids;
    for (const PrunedPoint& point : report.removed) ids.push_back(point.id);
    return ids;
  }

  std::vector<std::wstring> Left() const { return RestorePointIds(machine.files, Root()); }
};

using Ids = std::vector<std::wstring>;

TEST_F(PruneTest, RemovesAllButTheNewest) {
  EXPECT_EQ(Removed(Prune(2)), Ids{L"2025-01-01T000000Z"});
  EXPECT_EQ(Left(), (Ids{L"2026-03-04T000000Z", L"2026-01-01T000000Z"}));
}

TEST_F(PruneTest, RemovesThoseThatAreOlderThanSoManyDays) {
  machine.clock.now = std::chrono::sys_days(std::chrono::year(2026) / 3 / 5);
  EXPECT_TRUE(Prune(0, 500).removed.empty());
  EXPECT_EQ(Removed(Prune(0, 60)), (Ids{L"2026-01-01T000000Z", L"2025-01-01T000000Z"}));
  EXPECT_EQ(Left(), Ids{L"2026-03-04T000000Z"});
}

TEST_F(PruneTest, KeepsTheNewestWhateverTheirAge) {
  machine.clock.now = std::chrono::sys_days(std::chrono::year(2030) / 1 / 1);
  EXPECT_EQ(Removed(Prune(2, 30)), Ids{L"2025-01-01T000000Z"});
}

TEST_F(PruneTest, SaysWhatItFrees) {
  const PruneReport report = Prune(2);
  ASSERT_EQ(report.removed.size(), 1u);
  EXPECT_EQ(report.removed[0].freedBytes, 8u);
}

TEST_F(PruneTest, LeavesWhatIsNoRestorePoint) {
  machine.files.Put(Root() + L"\\notes\\mine.txt", "x");
  machine.files.Put(Root() + L"\\notes.removed\\mine.txt", "x");
  Prune(0);
  EXPECT_EQ(machine.files.Names(Root()), (Ids{L"notes", L"notes.removed"}));
}

TEST_F(PruneTest, GivesAPointAnotherNameOnTheDiskBeforeAnythingOfItGoes) {
  std::vector<std::string> order;
  machine.files.fault = [&](const std::string& operation, const std::wstring&) {
    if (operation == "move" || operation == "flush" || operation == "remove") {
      order.push_back(operation);
    }
    return kSystemOk;
  };
  Prune(2);
  EXPECT_EQ(order, (std::vector<std::string>{"move", "flush", "remove", "remove"}));
}

TEST_F(PruneTest, NamesAPointThatCannotBeRemovedWholeAndTriesAgainTheNextTime) {
  machine.files.fault = [](const std::string& operation, const std::wstring&) {
    return operation == "remove" ? kSharingViolation : kSystemOk;
  };
  EXPECT_EQ(Prune(2).failed, Ids{L"2025-01-01T000000Z"});
  machine.files.fault = nullptr;
  EXPECT_TRUE(Prune(2).failed.empty());
  EXPECT_EQ(machine.files.Names(Root()), (Ids{L"2026-01-01T000000Z", L"2026-03-04T000000Z"}));
}

TEST_F(PruneTest, LeavesAPointAsItIsWhenItCannotBeRenamed) {
  machine.files.fault = [](const std::string& operation, const std::wstring&) {
    return operation == "move" ? kSharingViolation : kSystemOk;
  };
  EXPECT_EQ(Prune(2).failed, Ids{L"2025-01-01T000000Z"});
  EXPECT_EQ(machine.files.Bytes(Root() + L"\\2025-01-01T000000Z\\files\\1"), "678");
}

}  // namespace
}  // namespace carrovan
