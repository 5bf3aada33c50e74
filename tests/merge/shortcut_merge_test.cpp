#include "merge/shortcut_merge.h"

#include <gtest/gtest.h>

#include "tests/merge/merge_support.h"
#include "tests/support/fakes.h"

namespace carrovan {
namespace {

constexpr wchar_t kOldFolder[] = L"C:\\d\\old";
constexpr wchar_t kNewFolder[] = L"C:\\d\\new";

std::string Entry(const std::string& name, const std::string& command, const std::string& ctrl,
                  const std::string& key) {
  return "<" + name + "><Command>" + command + "</Command><Ctrl>" + ctrl + "</Ctrl><Key>" + key +
         "</Key></" + name + ">";
}

std::string Entry(int index, int command, int ctrl, int key) {
  return Entry("Accels-" + std::to_string(index), std::to_string(command), std::to_string(ctrl),
               std::to_string(key));
}

std::string Table(const std::string& count, const std::string& entries) {
  return "<T><Count>" + count + "</Count>" + entries + "</T>";
}

class ShortcutMerge : public testing::Test {
 protected:
  ShortcutMerge() {
    bench.files.PutFolder(kOldFolder);
    bench.files.PutFolder(kNewFolder);
  }

  void PutPair(const std::wstring& name, const std::string& oldXml, const std::string& newXml) {
    bench.files.Put(std::wstring(kOldFolder) + L"\\" + name, oldXml);
    bench.files.Put(std::wstring(kNewFolder) + L"\\" + name, newXml);
  }

  bool Merge() {
    return MergeShortcutFolders(kOldFolder, kNewFolder, L"T", bench.files, *bench.dom);
  }

  std::string New(const std::wstring& name) {
    return OneLine(bench.files.Bytes(std::wstring(kNewFolder) + L"\\" + name));
  }

  // The new document after a merge; "unchanged" when the merge found nothing to do.
  std::string Merged(const std::string& oldXml, const std::string& newXml) {
    PutPair(L"a.xml", oldXml, newXml);
    return Merge() ? New(L"a.xml") : "unchanged";
  }

  DomBench bench;
};

TEST_F(ShortcutMerge, AddsAFreeShortcutOfACommandThatTheNewFileLacks) {
  EXPECT_EQ(Merged(Table("3", Entry(0, 100, 8, 83) + Entry(1, 300, 8, 80) + Entry(2, 400, 8, 79)),
                   Table("2", Entry(0, 100, 8, 83) + Entry(1, 200, 8, 79))),
            Table("3", Entry(0, 100, 8, 83) + Entry(1, 200, 8, 79) + Entry(2, 300, 8, 80)));
}

TEST_F(ShortcutMerge, LeavesACommandWithTheSameKeysAlone) {
  EXPECT_EQ(Merged(Table("1", Entry(0, 1, 8, 65)), Table("1", Entry(0, 1, 4, 65))), "unchanged");
}

TEST_F(ShortcutMerge, SkipsAKeyOfTheSameCommandWhateverItsCtrl) {
  EXPECT_EQ(
      Merged(Table("2", Entry(0, 1, 2, 65) + Entry(1, 1, 2, 66)), Table("1", Entry(0, 1, 4, 65))),
      Table("2", Entry(0, 1, 4, 65) + Entry(1, 1, 2, 66)));
}

TEST_F(ShortcutMerge, GivesTwoCommandsTheSameFreeCombination) {
  EXPECT_EQ(
      Merged(Table("2", Entry(0, 2, 8, 65) + Entry(1, 1, 8, 65)), Table("1", Entry(4, 9, 1, 1))),
      Table("3", Entry(4, 9, 1, 1) + Entry(5, 1, 8, 65) + Entry(6, 2, 8, 65)));
}

TEST_F(ShortcutMerge, NumbersFromTheHighestIndexAndCountsOnFromTheCount) {
  EXPECT_EQ(
      Merged(Table("0", Entry(0, 1, 1, 1) + Entry(1, 1, 1, 2)),
             Table("10", Entry(7, 2, 2, 2) + Entry(3, 3, 3, 3))),
      Table("12", Entry(7, 2, 2, 2) + Entry(3, 3, 3, 3) + Entry(8, 1, 1, 1) + Entry(9, 1, 1, 2)));
}

TEST_F(ShortcutMerge, DoesWithoutACount) {
  EXPECT_EQ(Merged(Table("1", Entry(0, 1, 1, 1)), "<T>" + Entry(0, 2, 2, 2) + "</T>"),
            "<T>" + Entry(0, 2, 2, 2) + Entry(1, 1, 1, 1) + "</T>");
  EXPECT_EQ(Merged(Table("1", Entry(0, 1, 1, 1)), "<T><Count/>" + Entry(0, 2, 2, 2) + "</T>"),
            "<T><Count>1</Count>" + Entry(0, 2, 2, 2) + Entry(1, 1, 1, 1) + "</T>");
}

TEST_F(ShortcutMerge, ReadsNumbersLeniently) {
  EXPECT_EQ(Merged("<T>" + Entry("Accels-0", " 5x", "-1", "+7.5") + "</T>",
                   "<T>" + Entry("Accels-2b", "1", "1", "1") + "</T>"),
            "<T>" + Entry("Accels-2b", "1", "1", "1") + Entry(3, 5, -1, 7) + "</T>");
  EXPECT_EQ(
      Merged("<T><Accels-0><Command>5</Command></Accels-0></T>", Table("0", Entry(0, 1, 1, 1))),
      Table("1", Entry(0, 1, 1, 1) + Entry(1, 5, 0, 0)));
}

TEST_F(ShortcutMerge, IgnoresRecordsWithoutACommand) {
  const std::string without = "<Accels-3><Ctrl>1</Ctrl><Key>2</Key></Accels-3>";
  EXPECT_EQ(Merged(Table("2", Entry(0, 0, 1, 1) + without + Entry("Accels-4", "x", "1", "2")),
                   Table("1", Entry(0, 9, 9, 9))),
            "unchanged");
  EXPECT_EQ(Merged(Table("1", Entry(0, 1, 7, 7)), Table("1", Entry(0, 0, 7, 7))),
            Table("2", Entry(0, 0, 7, 7) + Entry(1, 1, 7, 7)));
}

TEST_F(ShortcutMerge, TakesAnyNameWithTheMarkForAnEntry) {
  EXPECT_EQ(Merged(Table("1", Entry("OldAccels-3", "5", "5", "5")),
                   "<T>" + Entry("OldAccels-3", "1", "1", "1") + "</T>"),
            "<T>" + Entry("OldAccels-3", "1", "1", "1") + Entry(1, 5, 5, 5) + "</T>");
}

TEST_F(ShortcutMerge, CountsTheNameOfAnEntryInSixteenBitUnits) {
  // The seven units of the first name end in front of "17Accels-"; a character beyond the first
  // plane counts for two of them.
  const std::string wide =
      "a\xF0\x90\x80\x80\xF0\x90\x80\x80\xF0\x90\x80\x80"
      "17Accels-";
  const std::string halved =
      "\xF0\x90\x80\x80\xF0\x90\x80\x80\xF0\x90\x80\x80\xF0\x90\x80\x80"
      "17Accels-";
  EXPECT_EQ(Merged(Table("1", Entry(0, 5, 5, 5)), "<T>" + Entry(wide, "1", "1", "1") + "</T>"),
            "<T>" + Entry(wide, "1", "1", "1") + Entry(18, 5, 5, 5) + "</T>");
  EXPECT_EQ(Merged(Table("1", Entry(0, 5, 5, 5)), "<T>" + Entry(halved, "1", "1", "1") + "</T>"),
            "<T>" + Entry(halved, "1", "1", "1") + Entry(1, 5, 5, 5) + "</T>");
}

TEST_F(ShortcutMerge, UsesTheFirstTableElementThatHoldsEntries) {
  EXPECT_EQ(
      Merged(Table("1", Entry(0, 5, 5, 5)),
             "<r><T/><x><T>" + Entry(0, 1, 1, 1) + "</T></x><T>" + Entry(0, 2, 2, 2) + "</T></r>"),
      "<r><T/><x><T>" + Entry(0, 1, 1, 1) + Entry(1, 5, 5, 5) + "</T></x><T>" + Entry(0, 2, 2, 2) +
          "</T></r>");
}

TEST_F(ShortcutMerge, ReplacesANewFileWithoutATableByItself) {
  for (const std::string newXml : {"<r><a/></r>", "<T/>", "<T><Count>4</Count></T>"}) {
    PutPair(L"a.xml", Table("1", Entry(0, 5, 5, 5)), newXml);
    bench.files.changes.clear();
    EXPECT_TRUE(Merge()) << newXml;
    EXPECT_EQ(New(L"a.xml"), newXml);
    const std::vector<std::wstring> expected = {
        L"write C:\\d\\new\\temp_a.xml", L"remove C:\\d\\new\\a.xml", L"move C:\\d\\new\\a.xml"};
    EXPECT_EQ(bench.files.changes, expected);
  }
}

TEST_F(ShortcutMerge, WrapsAroundAtTheLargestNumbers) {
  EXPECT_EQ(Merged(Table("1", Entry(0, 5, 5, 5)),
                   Table("2147483647", Entry("Accels-99999999999", "1", "1", "1"))),
            Table("-2147483648", Entry("Accels-99999999999", "1", "1", "1") +
                                     Entry("Accels--2147483648", "5", "5", "5")));
}

TEST_F(ShortcutMerge, TouchesOnlyNamesakes) {
  PutPair(L"a.xml", Table("1", Entry(0, 5, 5, 5)), Table("1", Entry(0, 1, 1, 1)));
  bench.files.Put(L"C:\\d\\old\\only_old.xml", Table("1", Entry(0, 5, 5, 5)));
  bench.files.Put(L"C:\\d\\new\\only_new.xml", Table("1", Entry(0, 1, 1, 1)));
  bench.files.Put(L"C:\\d\\old\\Case.xml", Table("1", Entry(0, 5, 5, 5)));
  bench.files.Put(L"C:\\d\\new\\case.xml", Table("1", Entry(0, 1, 1, 1)));
  EXPECT_TRUE(Merge());
  EXPECT_EQ(New(L"only_new.xml"), Table("1", Entry(0, 1, 1, 1)));
  EXPECT_EQ(New(L"case.xml"), Table("1", Entry(0, 1, 1, 1)));
  EXPECT_EQ(bench.files.Names(kNewFolder),
            (std::vector<std::wstring>{L"a.xml", L"case.xml", L"only_new.xml"}));
}

TEST_F(ShortcutMerge, ListsFilesWhateverTheCaseOfTheirExtension) {
  PutPair(L"a.XML", Table("1", Entry(0, 5, 5, 5)), Table("1", Entry(0, 1, 1, 1)));
  PutPair(L"b.xmlx", Table("1", Entry(0, 5, 5, 5)), Table("1", Entry(0, 1, 1, 1)));
  bench.files.PutFolder(L"C:\\d\\old\\c.xml");
  bench.files.PutFolder(L"C:\\d\\new\\c.xml");
  EXPECT_TRUE(Merge());
  EXPECT_EQ(New(L"a.XML"), Table("2", Entry(0, 1, 1, 1) + Entry(1, 5, 5, 5)));
  EXPECT_EQ(New(L"b.xmlx"), Table("1", Entry(0, 1, 1, 1)));
}

TEST_F(ShortcutMerge, IsFalseWhenAFolderIsMissingOrHasNoFiles) {
  EXPECT_FALSE(Merge());
  bench.files.Put(L"C:\\d\\old\\a.xml", Table("1", Entry(0, 5, 5, 5)));
  EXPECT_FALSE(Merge());
  EXPECT_FALSE(MergeShortcutFolders(kOldFolder, L"C:\\none", L"T", bench.files, *bench.dom));
}

TEST_F(ShortcutMerge, LeavesThePairWithoutADocumentAlone) {
  PutPair(L"a.xml", "<T>", Table("1", Entry(0, 1, 1, 1)));
  PutPair(L"b.xml", Table("1", Entry(0, 5, 5, 5)), "no document");
  PutPair(L"c.xml", "", "");
  EXPECT_FALSE(Merge());
  EXPECT_EQ(bench.files.changes, std::vector<std::wstring>());
  EXPECT_EQ(New(L"b.xml"), "no document");
}

TEST_F(ShortcutMerge, RemovesALeftoverTemporaryFileWhenThereIsNothingToAdd) {
  PutPair(L"a.xml", Table("1", Entry(0, 5, 5, 5)), Table("1", Entry(0, 5, 5, 5)));
  bench.files.Put(L"C:\\d\\new\\temp_a.xml", "left over");
  EXPECT_FALSE(Merge());
  EXPECT_FALSE(bench.files.Has(L"C:\\d\\new\\temp_a.xml"));
}

TEST_F(ShortcutMerge, KeepsANewFileThatCannotBeRemoved) {
  PutPair(L"a.xml", Table("1", Entry(0, 5, 5, 5)), Table("1", Entry(0, 1, 1, 1)));
  bench.files.MakeReadOnly(L"C:\\d\\new\\a.xml");
  EXPECT_FALSE(Merge());
  EXPECT_EQ(New(L"a.xml"), Table("1", Entry(0, 1, 1, 1)));
  EXPECT_FALSE(bench.files.Has(L"C:\\d\\new\\temp_a.xml"));
}

TEST_F(ShortcutMerge, PutsTheOldFileInPlaceWhenTheMoveFails) {
  PutPair(L"a.xml", Table("1", Entry(0, 5, 5, 5)), Table("1", Entry(0, 1, 1, 1)));
  bench.files.fault = [](const std::string& operation, const std::wstring&) {
    return operation == "move" ? kSharingViolation : kSystemOk;
  };
  EXPECT_FALSE(Merge());
  EXPECT_EQ(New(L"a.xml"), Table("1", Entry(0, 5, 5, 5)));
  EXPECT_FALSE(bench.files.Has(L"C:\\d\\new\\temp_a.xml"));
}

TEST_F(ShortcutMerge, KeepsTheMergedFileWhenNothingCanTakeTheNewFilesPlace) {
  PutPair(L"a.xml", Table("1", Entry(0, 5, 5, 5)), Table("1", Entry(0, 1, 1, 1)));
  bench.files.fault = [](const std::string& operation, const std::wstring&) {
    return operation == "move" || operation == "copy" ? kSystemDiskFull : kSystemOk;
  };
  EXPECT_FALSE(Merge());
  EXPECT_FALSE(bench.files.Has(L"C:\\d\\new\\a.xml"));
  EXPECT_TRUE(bench.files.Has(L"C:\\d\\new\\temp_a.xml"));
}

TEST_F(ShortcutMerge, LeavesTheNewFileWhenTheResultCannotBeSaved) {
  PutPair(L"a.xml", Table("1", Entry(0, 5, 5, 5)), Table("1", Entry(0, 1, 1, 1)));
  bench.files.fault = [](const std::string& operation, const std::wstring&) {
    return operation == "write" ? kSystemDiskFull : kSystemOk;
  };
  EXPECT_FALSE(Merge());
  EXPECT_EQ(New(L"a.xml"), Table("1", Entry(0, 1, 1, 1)));
}

TEST_F(ShortcutMerge, IsFalseWhenTheDomMakesNoDocument) {
  PutPair(L"a.xml", Table("1", Entry(0, 5, 5, 5)), Table("1", Entry(0, 1, 1, 1)));
  for (const int documents : {0, 1}) {
    FaultyDom dom(*bench.dom);
    dom.documentsUntilFailure = documents;
    EXPECT_FALSE(MergeShortcutFolders(kOldFolder, kNewFolder, L"T", bench.files, dom));
  }
}

TEST_F(ShortcutMerge, PassesOverPipesAndDevices) {
  PutPair(L"pipe.xml", Table("1", Entry(0, 5, 5, 5)), Table("1", Entry(0, 1, 1, 1)));
  SpecialFiles files(bench.files, L"pipe.xml");
  EXPECT_FALSE(MergeShortcutFolders(kOldFolder, kNewFolder, L"T", files, *bench.dom));
  EXPECT_EQ(New(L"pipe.xml"), Table("1", Entry(0, 1, 1, 1)));
}

TEST_F(ShortcutMerge, DoesNotCountEntriesThatTheDomDoesNotCreate) {
  PutPair(L"a.xml", Table("1", Entry(0, 5, 5, 5)), Table("1", Entry(0, 1, 1, 1)));
  FaultyDom dom(*bench.dom);
  dom.createsElements = false;
  EXPECT_TRUE(MergeShortcutFolders(kOldFolder, kNewFolder, L"T", bench.files, dom));
  EXPECT_EQ(New(L"a.xml"), Table("1", Entry(0, 1, 1, 1)));
}

TEST_F(ShortcutMerge, MergesEvenWhenTheDomSaysThatItDidNotStart) {
  PutPair(L"a.xml", Table("1", Entry(0, 5, 5, 5)), Table("1", Entry(0, 1, 1, 1)));
  FaultyDom dom(*bench.dom);
  dom.starts = false;
  EXPECT_TRUE(MergeShortcutFolders(kOldFolder, kNewFolder, L"T", bench.files, dom));
}

TEST_F(ShortcutMerge, ReadsATableNamedLikeAProduct) {
  bench.files.Put(L"C:\\d\\old\\a.xml", "<V28.0>" + Entry(0, 5, 5, 5) + "</V28.0>");
  bench.files.Put(L"C:\\d\\new\\a.xml", "<V28.0>" + Entry(0, 1, 1, 1) + "</V28.0>");
  EXPECT_TRUE(MergeShortcutFolders(kOldFolder, kNewFolder, L"V28.0", bench.files, *bench.dom));
  EXPECT_FALSE(MergeShortcutFolders(kOldFolder, kNewFolder, L"V 28.0", bench.files, *bench.dom));
  EXPECT_FALSE(MergeShortcutFolders(kOldFolder, kNewFolder, L"*", bench.files, *bench.dom));
}

TEST_F(ShortcutMerge, FindsTheHighestIndexOfATable) {
  struct Row {
    const char* xml;
    std::int32_t highest;
  };
  const Row rows[] = {{"<T/>", -1},
                      {"<T><Count>3</Count><x/></T>", -1},
                      {"<T><Accels-x/></T>", 0},
                      {"<T><Accels-7/><Accels-3/></T>", 7},
                      {"<T><Accels--5/></T>", -1},
                      {"<T><OldAccels-9/></T>", 0}};
  for (const Row& row : rows) {
    LoadedXml table(bench, row.xml);
    EXPECT_EQ(HighestAcceleratorIndex(table.Root()), row.highest) << row.xml;
  }
  EXPECT_EQ(HighestAcceleratorIndex(XmlNode()), -1);
}

}  // namespace
}  // namespace carrovan
