// Journals that no run has written.
#include "restore/point_check.h"

#include "tests/restore/restore_fixture.h"
#include "text/text.h"

namespace carrovan {
namespace {

const std::wstring kGuidFolder = kLocal + L"Temp\\01234567-89AB-cdef-0123-456789abcdef";

class PlantedJournal : public RestoreFixture {
 protected:
  PlantedJournal() {
    machine.files.Put(L"C:\\Users\\u\\Documents\\thesis.txt", "years of work");
    machine.files.Put(kGuidFolder + L"\\x", "left by a killed run");
    machine.files.Put(Copies() + L"1", "planted");
    before = State();
  }

  std::wstring Copies() const { return Root() + L"\\" + recorder->Id() + L"\\files\\"; }

  void Plant(const JournalRecord& record) {
    ASSERT_EQ(machine.files.AppendBytes(Journal(), EncodeRecord(record, 0)), kSystemOk);
  }

  UndoReport UndoForced(bool trusted) {
    UndoChoice choice;
    choice.force = true;
    choice.trusted = trusted;
    return UndoChanges(Point(), choice, machine.Ports());
  }

  // One record after another, in a journal in which a good one stands first.
  void ExpectRefused(const std::vector<JournalRecord>& records, bool alsoTrusted) {
    for (const JournalRecord& record : records) {
      SCOPED_TRACE(EncodeRecord(record, 0));
      Begin();
      machine.files.Put(Copies() + L"1", "planted");
      Plant(FileChanging{kData + L"a.txt", FileImage{FileKind::kAbsent}, {}, {}});
      Plant(record);
      EXPECT_EQ(UndoForced(false).refused.size(), 1u);
      EXPECT_EQ(State(), before);
      if (!alsoTrusted) continue;
      EXPECT_EQ(UndoForced(true).refused.size(), 1u);
      EXPECT_EQ(State(), before);
    }
  }

  static FileChanging Made(const std::wstring& path) {
    return {path, FileImage{FileKind::kAbsent}, {}, {}};
  }
  static FileChanging Replaced(const std::wstring& path, const std::wstring& copy = L"files\\1") {
    return {path, ImageOfBytes("planted"), copy, {}};
  }
  static KeyChanging KeyWithValue(RegistryHive hive, const std::wstring& path) {
    return {hive, path, KeyImage{true, {MakeStringValue(L"a", L"calc.exe")}}, {L"a"}};
  }

  std::wstring before;
};

TEST_F(PlantedJournal, WipesNoFolderButARunsOwn) {
  ExpectRefused(
      {
          ScratchMade{L"C:\\Users\\u\\Documents"},
          ScratchMade{kLocal + L"Temp"},
          ScratchMade{kLocal + L"Temp\\..\\..\\..\\Documents"},
          ScratchMade{kLocal + L"Temp\\theirs"},
          ScratchMade{kLocal + L"Temp\\01234567-89AB-cdef-0123-456789abcdeg"},
          ScratchMade{kLocal + L"Temp\\01234567-89AB-cdef-0123-456789abcdef0"},
          ScratchMade{kGuidFolder + L"\\01234567-89AB-cdef-0123-456789abcdef"},
          ScratchMade{kLocal + L"01234567-89AB-cdef-0123-456789abcdef"},
          ScratchMade{L""},
      },
      true);
  Begin();
  Plant(ScratchMade{kGuidFolder});
  EXPECT_TRUE(UndoForced(false).IsComplete());
  EXPECT_FALSE(machine.files.Has(kGuidFolder));
}

TEST_F(PlantedJournal, ChangesNothingOutsideTheApplicationData) {
  ExpectRefused(
      {
          Made(L"C:\\Users\\u\\Documents\\thesis.txt"),
          Replaced(L"C:\\Users\\u\\Documents\\thesis.txt"),
          Replaced(L"C:\\Users\\u\\AppData\\x.txt"),
          Replaced(L"C:\\Users\\u\\AppData\\Local"),
          Replaced(kData + L"..\\..\\..\\Documents\\thesis.txt"),
          Replaced(L"C:\\Users\\u\\AppData\\Local/../../Documents/thesis.txt"),
          Replaced(kData + L"a.txt:stream"),
          Replaced(kData + L"nul"),
          Replaced(kData + L"b. "),
          Replaced(kData + L"\\b"),
          Replaced(L"thesis.txt"),
          Replaced(L"\\\\server\\share\\x"),
          Made(Root() + L"\\2001-01-01T000000Z\\journal.jsonl"),
      },
      true);
}

TEST_F(PlantedJournal, ChangesNothingOfOtherProgramsUnlessTrusted) {
  const std::wstring startup =
      L"C:\\Users\\u\\AppData\\Roaming\\Microsoft\\Windows\\Start Menu\\Programs\\Startup\\";
  ExpectRefused(
      {
          Replaced(startup + L"x.cmd"),
          Made(startup + L"x.cmd"),
          Replaced(kLocal + L"x.txt"),
          Replaced(kLocal + L"Other\\x.txt"),
          Replaced(kLocal + L"VantricX\\x.txt"),
          KeyWithValue(kUserHive, L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run"),
          KeyWithValue(kUserHive, L"SOFTWARE"),
          KeyWithValue(kUserHive, L""),
          KeyWithValue(kUserHive, L"Environment"),
          KeyWithValue(kUserHive, L"SOFTWARE\\\\Vantric"),
          KeyWithValue(kUserHive, L"SOFTWARE\\VantricX"),
          KeyWithValue(RegistryHive::kLocalMachine, L"SOFTWARE\\Vantric"),
      },
      false);
  machine.files.PutFolder(kLocal + L"Other");
  Begin();
  machine.files.Put(Copies() + L"1", "planted");
  Plant(Replaced(kLocal + L"Other\\x.txt"));
  Plant(KeyWithValue(kUserHive, L"Environment"));
  EXPECT_TRUE(UndoForced(true).IsComplete());
  EXPECT_EQ(machine.files.Bytes(kLocal + L"Other\\x.txt"), "planted");
  EXPECT_NE(Key(L"Environment").Value(L"a"), nullptr);
}

TEST_F(PlantedJournal, TakesNothingForACopyButWhatARunKeeps) {
  std::vector<JournalRecord> records;
  for (const wchar_t* copy :
       {L"..\\..\\..\\..\\..\\Documents\\thesis.txt", L"files\\..\\journal.jsonl", L"files\\x",
        L"files\\", L"files", L"files\\1\\2", L"C:\\Users\\u\\Documents\\thesis.txt"}) {
    records.push_back(Replaced(kData + L"x.txt", copy));
    records.push_back(FileChanging{kData + L"x.txt", FileImage{FileKind::kLink}, copy, {}});
  }
  // A file where a link should be.
  records.push_back(FileChanging{kData + L"x.txt", FileImage{FileKind::kLink}, L"files\\1", {}});
  for (const wchar_t* part : {L"..\\..\\..\\..\\Documents\\thesis.txt", L"a.txt", L"~carrovan.part",
                              L"sub\\~carrovan0.part"}) {
    records.push_back(FileChanging{kData + L"x.txt", FileImage{FileKind::kAbsent}, {}, part});
  }
  ExpectRefused(records, true);
}

TEST_F(PlantedJournal, NamesWhatItRefuses) {
  Plant(ScratchMade{L"C:\\Users\\u\\Documents"});
  Plant(KeyWithValue(kUserHive, L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run"));
  EXPECT_EQ(UndoForced(false).refused,
            (std::vector<std::wstring>{
                L"C:\\Users\\u\\Documents is no folder of a run's own",
                L"HKEY_CURRENT_USER\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run is not a "
                L"key of the product"}));
}

TEST_F(PlantedJournal, TakesWhatARunMakesOnTheWayToItsOwn) {
  Plant(Made(L"C:\\Users\\u\\AppData\\Roaming"));
  Plant(Made(L"C:\\Users\\u\\AppData\\Roaming\\ORMA"));
  Plant(Made(L"C:\\Users\\u\\AppData\\Roaming\\26.0"));
  Plant(KeyChanging{kUserHive, L"Software", KeyImage{}, {}});
  Plant(KeyWithValue(kUserHive, L"software\\vantric"));
  EXPECT_TRUE(RefusalsOfPoint(Point(), false, machine.Ports()).empty());
}

}  // namespace
}  // namespace carrovan
