#include "restore/restore_point.h"

#include "tests/restore/restore_fixture.h"

namespace carrovan {
namespace {

using RestorePointTest = RestoreFixture;

TEST_F(RestorePointTest, TellsWhatARunChanged) {
  EXPECT_EQ(run->files->WriteBytes(kData + L"a.txt", "after"), kSystemOk);
  EXPECT_EQ(run->registry->DeleteTree(kUserHive, kKey + L"\\Sub"), kSystemOk);
  EXPECT_EQ(Point().state, PointState::kUnfinished);
  EXPECT_TRUE(recorder->End());
  const RestorePoint point = Point();
  EXPECT_EQ(point.state, PointState::kFinished);
  EXPECT_EQ(point.about, (PointBegun{L"import", L"2026", L"x.ucex"}));
  ASSERT_EQ(point.files.size(), 1u);
  EXPECT_EQ(point.files[0].before, ImageOfBytes("before"));
  EXPECT_EQ(point.files[0].after, ImageOfBytes("after"));
  ASSERT_EQ(point.keys.size(), 1u);
  EXPECT_EQ(point.keys[0].keyPath, kKey + L"\\Sub");
  EXPECT_EQ(point.keys[0].after, KeyImage{});
}

TEST_F(RestorePointTest, PassesOverDamagedAndUnfinishedLines) {
  EXPECT_EQ(run->files->WriteBytes(kData + L"a.txt", "after"), kSystemOk);
  EXPECT_EQ(machine.files.AppendBytes(Journal(), "no record\n{\"record\":\"run ended\"}"),
            kSystemOk);
  EXPECT_EQ(Point().state, PointState::kUnfinished);
  EXPECT_EQ(Point().files.size(), 1u);
}

TEST_F(RestorePointTest, IsNoneWithoutABeginning) {
  const std::wstring other = Root() + L"\\2026-01-01T000000Z\\";
  EXPECT_EQ(ReadRestorePoint(machine.files, Root(), L"2026-01-01T000000Z"), std::nullopt);
  machine.files.Put(other + kJournalName, "{\"record\":\"run ended\"}\n");
  EXPECT_EQ(ReadRestorePoint(machine.files, Root(), L"2026-01-01T000000Z"), std::nullopt);
  EXPECT_EQ(ReadRestorePoint(machine.files, Root(), L".."), std::nullopt);
}

TEST_F(RestorePointTest, IsEmptyWhenItsRunWasKilledAtOnce) {
  const std::wstring id = L"2026-01-01T000000Z";
  const std::wstring folder = Root() + L"\\" + id;
  machine.files.PutFolder(folder);
  for (const char* journal : {"", "{\"record\":\"point be"}) {
    machine.files.Put(folder + L"\\" + kJournalName, journal);
    const auto point = ReadRestorePoint(machine.files, Root(), id);
    ASSERT_TRUE(point);
    EXPECT_TRUE(point->files.empty());
    EXPECT_TRUE(UndoChanges(*point, {}, machine.Ports()).IsComplete());
  }
}

}  // namespace
}  // namespace carrovan
