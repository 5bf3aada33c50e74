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
  // A loss of power may leave the end of a line without the line.
  for (const std::string& journal :
       {std::string(), std::string("{\"record\":\"point be"), std::string(3, '\0') + "\n"}) {
    machine.files.Put(folder + L"\\" + kJournalName, journal);
    const auto point = ReadRestorePoint(machine.files, Root(), id);
    ASSERT_TRUE(point);
    EXPECT_TRUE(point->files.empty());
    EXPECT_TRUE(UndoChanges(*point, {}, machine.Ports()).IsComplete());
  }
}

class DamagedPoint : public RestoreFixture {
 protected:
  DamagedPoint() {
    EXPECT_EQ(run->files->WriteBytes(kData + L"a.txt", "after"), kSystemOk);
    EXPECT_EQ(run->files->RemoveFile(kData + L"sub\\b.txt"), kSystemOk);
    EXPECT_EQ(run->registry->DeleteTree(kUserHive, kKey), kSystemOk);
    recorder->End();
    whole_ = machine.files.Bytes(Journal());
  }

  void ExpectRefused() {
    const std::wstring state = State();
    EXPECT_NE(Point().damage, L"");
    EXPECT_EQ(Undo().refused.size(), 1u);
    EXPECT_EQ(State(), state);
  }

  std::string whole_;
};

TEST_F(DamagedPoint, IsRefusedWithoutAnyOneOfItsLines) {
  EXPECT_EQ(Point().damage, L"");
  std::size_t lines = 0;
  for (std::size_t at = 0; at < whole_.size();) {
    const std::size_t next = whole_.find('\n', at) + 1;
    // The first line says that it is a journal, and nothing vouches for the last one.
    if (at > 0 && next < whole_.size()) {
      SCOPED_TRACE(whole_.substr(at, next - at));
      machine.files.Put(Journal(), whole_.substr(0, at) + whole_.substr(next));
      ExpectRefused();
      ++lines;
    }
    at = next;
  }
  EXPECT_GE(lines, 8u);
}

TEST_F(DamagedPoint, IsRefusedWhenALineHasChanged) {
  for (std::size_t at = whole_.find('\n') + 1; at < whole_.rfind("{\"flushed"); at += 7) {
    if (whole_[at] == '\n') continue;
    SCOPED_TRACE(at);
    std::string changed = whole_;
    changed[at] = static_cast<char>(changed[at] ^ 1);
    machine.files.Put(Journal(), changed);
    ExpectRefused();
  }
}

TEST_F(DamagedPoint, IsRefusedWhenACopyHasChangedThatIsNeeded) {
  const std::wstring copy = Point().files.at(0).copy;
  machine.files.Put(copy, "befora");
  const UndoReport report = Undo();
  ASSERT_EQ(report.refused.size(), 1u);
  EXPECT_NE(report.refused[0].find(copy), std::wstring::npos);
  machine.files.Put(kData + L"a.txt", "before");
  EXPECT_TRUE(Undo().IsComplete()) << "what is as it was needs no copy";
}

TEST_F(DamagedPoint, IsRefusedWhenACopyIsMissing) {
  EXPECT_EQ(machine.files.RemoveFile(Point().files.at(0).copy), kSystemOk);
  EXPECT_EQ(Undo().refused.size(), 1u);
}

TEST_F(RestorePointTest, IsReadInTheFirstFormat) {
  const std::wstring id = L"2026-01-01T000000Z";
  machine.files.Put(Root() + L"\\" + id + L"\\" + kJournalName,
                    "{\"format\":1,\"record\":\"point begun\",\"verb\":\"import\"}\n"
                    "{\"path\":\"C:\\\\x\",\"before\":{\"kind\":\"absent\"},"
                    "\"record\":\"file changing\"}\n"
                    "{\"record\":\"run ended\"}\n");
  const auto point = ReadRestorePoint(machine.files, Root(), id);
  ASSERT_TRUE(point);
  EXPECT_EQ(point->damage, L"");
  EXPECT_EQ(point->state, PointState::kFinished);
  EXPECT_EQ(point->files.size(), 1u);
}

}  // namespace
}  // namespace carrovan
