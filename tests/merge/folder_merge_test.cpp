#include "merge/folder_merge.h"

#include <gtest/gtest.h>

#include "tests/merge/merge_support.h"
#include "tests/support/fakes.h"
#include "tests/support/test_links.h"
#include "tests/support/test_machine.h"
#include "text/text.h"

namespace carrovan {
namespace {

using Lines = std::vector<std::wstring>;

class FolderMerge : public testing::Test {
 protected:
  FolderMerge() {
    bench.files.PutFolder(L"C:\\d\\old");
    bench.files.PutFolder(L"C:\\d\\new");
  }

  void PutOld(const std::wstring& name, const std::string& xml) {
    bench.files.Put(L"C:\\d\\old\\" + name, xml);
  }
  void PutNew(const std::wstring& name, const std::string& xml) {
    bench.files.Put(L"C:\\d\\new\\" + name, xml);
  }
  std::string Old(const std::wstring& name) {
    return OneLine(bench.files.Bytes(L"C:\\d\\old\\" + name));
  }
  std::string New(const std::wstring& name) { return bench.files.Bytes(L"C:\\d\\new\\" + name); }

  bool Merge(const std::wstring& oldFolder = L"C:\\d\\old",
             const std::wstring& newFolder = L"C:\\d\\new") {
    return MergeAndSyncFolders(oldFolder, newFolder, {bench.files, *bench.dom, bench.log});
  }

  void FailOn(const std::string& operation, const std::wstring& path, SystemCode code) {
    bench.files.fault = [=](const std::string& asked, const std::wstring& of) {
      return asked == operation && of == path ? code : kSystemOk;
    };
  }

  // The system's number of the error that the merge raised.
  SystemCode Raised() {
    try {
      Merge();
    } catch (const FileSystemError& error) {
      return error.Code();
    }
    return kSystemOk;
  }

  DomBench bench;
};

TEST_F(FolderMerge, PassesOverPipesAndDevices) {
  PutOld(L"pipe.xml", "old");
  PutNew(L"pipe.xml", "new");
  PutOld(L"A.xml", "<r><a/></r>");
  PutNew(L"A.xml", "<r/>");
  SpecialFiles files(bench.files, L"pipe.xml");
  EXPECT_TRUE(MergeAndSyncFolders(L"C:\\d\\old", L"C:\\d\\new", {files, *bench.dom, bench.log}));
  EXPECT_EQ(bench.files.Bytes(L"C:\\d\\old\\pipe.xml"), "old");
  EXPECT_EQ(New(L"pipe.xml"), "new");
  EXPECT_EQ(bench.log.lines.at(0), L"Old folder contains 1 XML files");
  EXPECT_EQ(bench.log.lines.at(1), L"New folder contains 1 XML files");
}

TEST_F(FolderMerge, TellsEveryStepOfTheWorkedExample) {
  PutOld(L"A.xml", "<r>a</r>");
  PutOld(L"B.xml", "<r><t>old</t></r>");
  PutNew(L"B.xml", "<r><t>new</t><u/></r>");
  PutNew(L"C.xml", "<r>c</r>");
  EXPECT_TRUE(Merge());
  const Lines expected = {
      L"Old folder contains 2 XML files",
      L"New folder contains 2 XML files",
      L"\n=== Merging common files ===",
      L"did find the old file, copying new version: A.xml",
      L"Merging: B.xml",
      L"Successfully merged: B.xml",
      L"\n=== Copying new files ===",
      L"Copied new file: C.xml",
      L"\n=== Identifying obsolete files ===",
      L"\n=== Creating backup ===",
      L"Backup created at: C:\\d\\old_backup",
      L"\n=== Cleaning old folder ===",
      L"\n=== Updating old folder ===",
      L"Updated: A.xml",
      L"Updated: B.xml",
      L"Updated: C.xml",
      L"\n=== Merge and Sync Summary ===",
      L"Successfully merged: 1 out of 1 common files",
      L"New files copied: 1",
      L"Obsolete files deleted: 0",
      L"Backup location: C:\\d\\old_backup",
      L"Final file count in old folder: 2 files",
  };
  EXPECT_EQ(bench.log.lines, expected);
  EXPECT_EQ(Old(L"A.xml"), "<r>a</r>");
  EXPECT_EQ(Old(L"B.xml"), "<r><t>old</t><u/></r>");
  EXPECT_EQ(Old(L"C.xml"), "<r>c</r>");
  EXPECT_EQ(New(L"A.xml"), "<r>a</r>");
  EXPECT_EQ(New(L"B.xml"), "<r><t>new</t><u/></r>");
  EXPECT_EQ(bench.files.Names(L"C:\\d\\old_backup"), (Lines{L"A.xml", L"B.xml"}));
  EXPECT_EQ(bench.files.Bytes(L"C:\\d\\old_backup\\B.xml"), "<r><t>old</t></r>");
  EXPECT_FALSE(bench.files.Exists(L"C:\\d\\old_merged_temp"));
}

TEST_F(FolderMerge, RefusesAFolderThatIsNone) {
  EXPECT_FALSE(Merge(L"C:\\none", L"C:\\none too"));
  EXPECT_FALSE(Merge(L"C:\\d\\old", L"C:\\none"));
  bench.files.Put(L"C:\\d\\file", "");
  EXPECT_FALSE(Merge(L"C:\\d\\file", L"C:\\d\\new"));
  EXPECT_FALSE(Merge(L"C:\\d\\old", L"C:\\d\\file"));
  const Lines expected = {
      L"Old folder does not exist or is not a directory: C:\\none",
      L"New folder does not exist or is not a directory: C:\\none",
      L"Old folder does not exist or is not a directory: C:\\d\\file",
      L"New folder does not exist or is not a directory: C:\\d\\file",
  };
  EXPECT_EQ(bench.log.lines, expected);
  EXPECT_TRUE(bench.files.changes.empty());
}

TEST_F(FolderMerge, IsFalseForTwoFoldersWithoutXmlFiles) {
  PutOld(L"note.txt", "kept");
  EXPECT_FALSE(Merge());
  EXPECT_TRUE(bench.files.IsFolder(L"C:\\d\\old_backup"));
  EXPECT_TRUE(bench.files.Names(L"C:\\d\\old_backup").empty());
  EXPECT_EQ(Old(L"note.txt"), "kept");
  EXPECT_EQ(bench.log.lines.back(), L"Final file count in old folder: 0 files");
}

TEST_F(FolderMerge, TakesTheNewVersionOfAFileThatDoesNotMerge) {
  PutOld(L"a.xml", "<r>");
  PutNew(L"a.xml", "<r>new</r>");
  EXPECT_FALSE(Merge());
  const Lines middle(bench.log.lines.begin() + 3, bench.log.lines.begin() + 6);
  EXPECT_EQ(middle, (Lines{L"Merging: a.xml", L"Failed to load old XML file: C:\\d\\old\\a.xml",
                           L"Failed to merge, copying new version: a.xml"}));
  EXPECT_EQ(Old(L"a.xml"), "<r>new</r>");
  EXPECT_EQ(bench.files.Bytes(L"C:\\d\\old_backup\\a.xml"), "<r>");
  EXPECT_EQ(bench.log.lines.back(), L"Final file count in old folder: 0 files");
}

TEST_F(FolderMerge, TakesNamesInTheOrderOfTheirUnitsWithCase) {
  for (const wchar_t* name : {L"a.xml", L"B.xml", L"\xFF21.xml", L"c.xml"}) PutOld(name, "<r/>");
  PutOld(FromUtf8("\xF0\x90\x80\x80.xml"), "<r/>");
  Merge();
  Lines order;
  for (const std::wstring& line : bench.log.lines) {
    if (line.starts_with(L"did find")) order.push_back(line.substr(line.find(L": ") + 2));
  }
  EXPECT_EQ(order,
            (Lines{L"B.xml", L"a.xml", L"c.xml", FromUtf8("\xF0\x90\x80\x80.xml"), L"\xFF21.xml"}));
}

TEST_F(FolderMerge, TakesNamesThatDifferInCaseForTwoFiles) {
  PutOld(L"Ribbon.xml", "<r>old</r>");
  PutNew(L"ribbon.xml", "<r>new</r>");
  EXPECT_TRUE(Merge());
  EXPECT_EQ(bench.log.lines[3], L"did find the old file, copying new version: Ribbon.xml");
  EXPECT_EQ(bench.log.lines[5], L"Copied new file: ribbon.xml");
  // On files whose names ignore case the old one is laid over the new one, and then is the one
  // that is copied.
  EXPECT_EQ(New(L"ribbon.xml"), "<r>old</r>");
  EXPECT_EQ(Old(L"Ribbon.xml"), "<r>old</r>");
}

TEST_F(FolderMerge, LeavesOtherExtensionsFoldersAndNamesWithoutExtensionAlone) {
  for (const wchar_t* name : {L"a.XML", L"b.xml.bak", L".xml", L"cxml"}) PutOld(name, "kept");
  bench.files.PutFolder(L"C:\\d\\old\\folder.xml");
  bench.files.Put(L"C:\\d\\old\\sub\\deep.xml", "kept");
  bench.files.PutFolder(L"C:\\d\\new\\other.xml");
  PutNew(L"n.XML", "not listed");
  EXPECT_FALSE(Merge());
  EXPECT_EQ(bench.log.lines[0], L"Old folder contains 0 XML files");
  EXPECT_EQ(bench.log.lines[1], L"New folder contains 0 XML files");
  for (const wchar_t* name : {L"a.XML", L"b.xml.bak", L".xml", L"cxml", L"sub\\deep.xml"}) {
    EXPECT_EQ(Old(name), "kept");
  }
  EXPECT_TRUE(bench.files.Names(L"C:\\d\\old_backup").empty());
  EXPECT_FALSE(bench.files.Has(L"C:\\d\\old\\n.XML"));
}

TEST_F(FolderMerge, PutsItsFoldersInsideAFolderThatEndsInABackslash) {
  PutOld(L"a.xml", "<r/>");
  PutNew(L"a.xml", "<r/>");
  EXPECT_TRUE(Merge(L"C:\\d\\old\\"));
  EXPECT_EQ(bench.files.Names(L"C:\\d\\old"), (Lines{L"_backup", L"a.xml"}));
  EXPECT_EQ(bench.files.Names(L"C:\\d\\old\\_backup"), Lines{L"a.xml"});
  EXPECT_EQ(bench.log.lines[bench.log.lines.size() - 2], L"Backup location: C:\\d\\old\\_backup");
}

TEST_F(FolderMerge, WorksInsideAFolderThatEndsInABackslash) {
  PutOld(L"a.xml", "<r/>");
  PutNew(L"a.xml", "<r/>");
  Lines whileUpdating;
  bench.files.fault = [&](const std::string& operation, const std::wstring& path) {
    if (operation == "copy" && path.ends_with(L"_merged_temp\\a.xml")) {
      whileUpdating = bench.files.Names(L"C:\\d\\old");
      EXPECT_EQ(path, L"C:\\d\\old\\_merged_temp\\a.xml");
    }
    return kSystemOk;
  };
  EXPECT_TRUE(Merge(L"C:\\d\\old\\"));
  EXPECT_EQ(whileUpdating, (Lines{L"_backup", L"_merged_temp"}));
}

TEST_F(FolderMerge, RemovesItsWorkingFolderBeforeTheSummary) {
  PutNew(L"a.xml", "<r/>");
  Lines before;
  bench.files.fault = [&](const std::string& operation, const std::wstring& path) {
    if (operation == "remove" && path == L"C:\\d\\old_merged_temp\\a.xml") before = bench.log.lines;
    return kSystemOk;
  };
  EXPECT_TRUE(Merge());
  ASSERT_FALSE(before.empty());
  EXPECT_EQ(before.back(), L"Updated: a.xml");
}

TEST_F(FolderMerge, GivesNoSummaryWhenItsWorkingFolderStays) {
  PutNew(L"a.xml", "<r/>");
  FailOn("remove", L"C:\\d\\old_merged_temp\\a.xml", kSharingViolation);
  EXPECT_NE(Raised(), kSystemOk);
  EXPECT_EQ(bench.log.lines.back(), L"Updated: a.xml");
  EXPECT_EQ(Old(L"a.xml"), "<r/>");
}

TEST_F(FolderMerge, StartsAfreshOverWhatAKilledRunLeft) {
  PutOld(L"a.xml", "<r/>");
  PutNew(L"a.xml", "<r/>");
  bench.files.Put(L"C:\\d\\old_merged_temp\\stale.xml", "stale");
  bench.files.Put(L"C:\\d\\old_merged_temp\\sub\\stale.xml", "stale");
  bench.files.Put(L"C:\\d\\old_backup\\stale.xml", "stale");
  EXPECT_TRUE(Merge());
  EXPECT_EQ(bench.files.Names(L"C:\\d\\old"), Lines{L"a.xml"});
  EXPECT_EQ(bench.files.Names(L"C:\\d\\old_backup"), Lines{L"a.xml"});
}

TEST_F(FolderMerge, ReplacesAFileInTheWorkingFoldersPlace) {
  PutNew(L"a.xml", "<r/>");
  bench.files.Put(L"C:\\d\\old_merged_temp", "a file");
  EXPECT_TRUE(Merge());
  EXPECT_EQ(Old(L"a.xml"), "<r/>");
}

TEST_F(FolderMerge, MergesAFolderWithItself) {
  PutOld(L"a.xml", "<r><t>1</t></r>");
  EXPECT_TRUE(Merge(L"C:\\d\\old", L"C:\\d\\old"));
  EXPECT_EQ(Old(L"a.xml"), "<r><t>1</t></r>");
}

TEST_F(FolderMerge, CopiesFilesOfAnyExtensionFromTheWorkingFolder) {
  PutNew(L"a.xml", "<r/>");
  bench.files.fault = [this](const std::string& operation, const std::wstring& path) {
    // Somebody else's file turns up in the working folder while the merge runs.
    if (operation == "list" && path == L"C:\\d\\old_merged_temp") {
      bench.files.Put(L"C:\\d\\old_merged_temp\\x.txt", "x");
    }
    return kSystemOk;
  };
  EXPECT_TRUE(Merge());
  EXPECT_EQ(Old(L"x.txt"), "x");
}

TEST_F(FolderMerge, LogsACopyThatTheSystemLeftUndone) {
  PutOld(L"a.xml", "<r>o</r>");
  PutNew(L"b.xml", "<r>n</r>");
  FailOn("copy", L"C:\\d\\new\\b.xml", kCopySkipped);
  EXPECT_FALSE(Merge());
  EXPECT_EQ(bench.log.lines[5], L"Failed to copy: b.xml");
  bench.log.lines.clear();
  FailOn("copy", L"C:\\d\\old_merged_temp\\a.xml", kCopySkipped);
  EXPECT_TRUE(Merge());
  const auto failed =
      std::find(bench.log.lines.begin(), bench.log.lines.end(), L"Failed to update: a.xml");
  EXPECT_NE(failed, bench.log.lines.end());
}

TEST_F(FolderMerge, RaisesWhatAFileOperationReports) {
  struct Row {
    const char* operation;
    const wchar_t* path;
    const wchar_t* lastLine;
  };
  const Row rows[] = {
      {"list", L"C:\\d\\old", nullptr},
      {"list", L"C:\\d\\new", nullptr},
      {"create folder", L"C:\\d\\old_merged_temp", L"New folder contains 2 XML files"},
      {"copy", L"C:\\d\\old\\a.xml", L"did find the old file, copying new version: a.xml"},
      {"copy", L"C:\\d\\new\\c.xml", L"\n=== Copying new files ==="},
      {"create folder", L"C:\\d\\old_backup", L"\n=== Creating backup ==="},
      {"copy", L"C:\\d\\old\\b.xml", L"\n=== Creating backup ==="},
      {"remove", L"C:\\d\\old\\b.xml", L"\n=== Cleaning old folder ==="},
      {"list", L"C:\\d\\old_merged_temp", L"\n=== Updating old folder ==="},
      {"copy", L"C:\\d\\old_merged_temp\\b.xml", L"Updated: a.xml"},
  };
  for (const Row& row : rows) {
    bench.files = MemoryFiles();
    bench.log.lines.clear();
    PutOld(L"a.xml", "<r/>");
    PutOld(L"b.xml", "<r/>");
    PutNew(L"b.xml", "<r/>");
    PutNew(L"c.xml", "<r/>");
    FailOn(row.operation, row.path, kAccessDenied);
    EXPECT_EQ(Raised(), kAccessDenied) << row.operation << " " << ToUtf8(row.path);
    if (row.lastLine != nullptr) {
      EXPECT_EQ(bench.log.lines.back(), row.lastLine);
    } else {
      EXPECT_TRUE(bench.log.lines.empty());
    }
  }
}

TEST_F(FolderMerge, ToleratesAnEmptiedWorkingFolderThatIsInUse) {
  PutNew(L"a.xml", "<r/>");
  FailOn("remove folder", L"C:\\d\\old_merged_temp", kSharingViolation);
  EXPECT_TRUE(Merge());
  EXPECT_TRUE(Merge());
  EXPECT_TRUE(bench.files.Names(L"C:\\d\\old_merged_temp").empty());
}

TEST_F(FolderMerge, RaisesWhenAReadOnlyFileIsInTheWay) {
  PutOld(L"a.xml", "<r/>");
  PutNew(L"a.xml", "<r/>");
  bench.files.MakeReadOnly(L"C:\\d\\old\\a.xml");
  EXPECT_EQ(Raised(), kAccessDenied);
  EXPECT_EQ(Old(L"a.xml"), "<r/>");
  EXPECT_EQ(bench.files.Bytes(L"C:\\d\\old_backup\\a.xml"), "<r/>");
  EXPECT_TRUE(bench.files.Exists(L"C:\\d\\old_merged_temp\\a.xml"));
}

TEST(FileSystemError, SaysWhatFailedInOneLine) {
  const FileSystemError error(kAccessDenied, L"C:\\x");
  EXPECT_EQ(error.Description(), L"C:\\x: access denied (error 5)");
  EXPECT_STREQ(error.what(), "a file operation failed");
}

TEST(ListXmlFileNames, IsEmptyForAFolderThatIsNone) {
  MemoryFiles files;
  files.Put(L"C:\\a.xml", "");
  EXPECT_TRUE(ListXmlFileNames(files, L"C:\\none").empty());
  EXPECT_TRUE(ListXmlFileNames(files, L"C:\\a.xml").empty());
  EXPECT_EQ(ListXmlFileNames(files, L"C:\\"), FileNameSet{L"a.xml"});
}

class LinkedFolderMerge : public FolderMerge {
 protected:
  std::wstring At(const std::wstring& below) const { return machine->ScratchFolder() + below; }

  void SetUp() override {
    machine->PutFile(At(L"old\\a.xml"), "<r>a</r>");
    machine->PutFile(At(L"shared\\b.xml"), "<r>b</r>");
    machine->MakeFolder(At(L"new"));
  }
  void MergeThem() {
    const Machine ports = machine->Ports();
    const auto dom = OpenXmlDom(*ports.files);
    EXPECT_TRUE(MergeAndSyncFolders(At(L"old"), At(L"new"), {*ports.files, *dom, bench.log}));
  }
  std::vector<std::wstring> SharedNames() const {
    std::vector<std::wstring> names;
    for (const FolderEntry& entry : ListFolder(*machine->Ports().files, At(L"shared"))) {
      names.push_back(entry.name);
    }
    return names;
  }

  const std::unique_ptr<TestMachine> machine = NewTestMachine();
};

TEST_F(LinkedFolderMerge, ReadsTheNewFolderThroughALinkAndWritesNothingThere) {
  machine->DeletePath(At(L"new"));
  if (!MakeLink(*machine, At(L"new"), At(L"shared"))) GTEST_SKIP() << "this system makes no links";
  MergeThem();
  EXPECT_EQ(SharedNames(), std::vector<std::wstring>{L"b.xml"});
  EXPECT_EQ(machine->FileBytes(At(L"old\\b.xml")), "<r>b</r>");
  EXPECT_EQ(machine->FileBytes(At(L"old\\a.xml")), "<r>a</r>");
}

TEST_F(LinkedFolderMerge, PutsItsOwnFoldersInThePlaceOfLinks) {
  machine->PutFile(At(L"new\\b.xml"), "<r>b</r>");
  for (const wchar_t* name : {L"old_merged_temp", L"old_backup"}) {
    if (!MakeLink(*machine, At(name), At(L"shared"))) GTEST_SKIP() << "this system makes no links";
  }
  MergeThem();
  EXPECT_EQ(SharedNames(), std::vector<std::wstring>{L"b.xml"});
  EXPECT_FALSE(machine->Ports().files->IsLink(At(L"old_backup")));
  EXPECT_EQ(machine->FileBytes(At(L"old_backup\\a.xml")), "<r>a</r>");
  machine->DeletePath(At(L"old_backup"));
  ASSERT_TRUE(MakeLink(*machine, At(L"old_backup"), At(L"nowhere")));
  MergeThem();
  EXPECT_EQ(machine->FileBytes(At(L"old_backup\\a.xml")), "<r>a</r>");
}

}  // namespace
}  // namespace carrovan
