#include "restore/change_recorder.h"

#include <algorithm>

#include "tests/restore/restore_fixture.h"

namespace carrovan {
namespace {

using ChangeRecorderTest = RestoreFixture;

TEST_F(ChangeRecorderTest, NotesAChangeBeforeItIsMade) {
  std::vector<std::string> order;
  machine.files.fault = [&](const std::string& operation, const std::wstring& path) {
    if (operation == "append") order.push_back("note");
    if (operation == "write" && path == kData + L"a.txt") order.push_back("change");
    return kSystemOk;
  };
  EXPECT_EQ(run->files->WriteBytes(kData + L"a.txt", "after"), kSystemOk);
  EXPECT_EQ(order, (std::vector<std::string>{"note", "change"}));
}

TEST_F(ChangeRecorderTest, NotesThatAChangeIsOverOnceItsContentIsFlushed) {
  std::vector<std::string> order;
  EXPECT_EQ(run->files->WriteBytes(kData + L"a.txt", "after"), kSystemOk);
  EXPECT_TRUE(Point().files.at(0).unfinished);
  machine.files.fault = [&](const std::string& operation, const std::wstring&) {
    if (operation == "append" || operation == "flush") order.push_back(operation);
    return kSystemOk;
  };
  recorder->End();
  EXPECT_EQ(order, (std::vector<std::string>{"flush", "append", "flush", "append", "flush"}));
  EXPECT_EQ(Point().files.at(0).after, ImageOfBytes("after"));
  EXPECT_FALSE(Point().files.at(0).unfinished);
}

TEST_F(ChangeRecorderTest, LeavesAChangeOpenWhoseContentCannotBeFlushed) {
  EXPECT_EQ(run->files->WriteBytes(kData + L"a.txt", "after"), kSystemOk);
  machine.files.fault = [&](const std::string& operation, const std::wstring& path) {
    const bool isJournal = path == Journal();
    return operation == "flush" && !isJournal ? kSystemDiskFull : kSystemOk;
  };
  recorder->End();
  EXPECT_TRUE(Point().files.at(0).unfinished);
}

TEST_F(ChangeRecorderTest, NotesManyAnnouncedChangesWithOneFlush) {
  std::size_t flushes = 0;
  for (int i = 0; i < 40; ++i) {
    machine.files.Put(kData + L"many\\" + std::to_wstring(i), "content");
  }
  machine.files.fault = [&](const std::string& operation, const std::wstring&) {
    flushes += operation == "flush" ? 1 : 0;
    return kSystemOk;
  };
  EXPECT_TRUE(WipeFolder(*run->files, kData + L"many"));
  EXPECT_EQ(flushes, 2u) << "one before the first file goes, one before the first folder";
}

TEST_F(ChangeRecorderTest, NotesAReplacementBeforeItBeginsAndWhenItIsOver) {
  using Steps = std::vector<std::string>;
  Steps order;
  machine.files.fault = [&](const std::string& operation, const std::wstring& path) {
    const bool isChange = path == kData + L"a.txt" && operation != "read" && operation != "copy";
    if (operation == "append") order.push_back("note");
    if (isChange) order.push_back(operation);
    return kSystemOk;
  };
  std::unique_ptr<FileReplacement> file;
  EXPECT_EQ(run->files->BeginReplacement(kData + L"a.txt", 1, file), kSystemOk);
  EXPECT_EQ(file->Append("x"), kSystemOk);
  EXPECT_EQ(file->Complete(), kSystemOk);
  file.reset();
  EXPECT_EQ(order, (Steps{"note", "begin", "write part", "write"}));
  recorder->End();
  order.clear();
  EXPECT_EQ(run->files->BeginReplacement(kData + L"a.txt", 1, file), kSystemOk);
  file.reset();
  EXPECT_EQ(order, (Steps{"note", "begin"})) << "what was noted as over begins anew";
}

TEST_F(ChangeRecorderTest, MakesNoChangeThatCannotBeNoted) {
  const std::wstring before = State();
  machine.files.fault = [](const std::string& operation, const std::wstring&) {
    return operation == "append" ? kSystemDiskFull : kSystemOk;
  };
  EXPECT_EQ(run->files->WriteBytes(kData + L"a.txt", "x"), kSystemDiskFull);
  std::unique_ptr<FileReplacement> file;
  EXPECT_EQ(run->files->BeginReplacement(kData + L"a.txt", 1, file), kSystemDiskFull);
  EXPECT_EQ(file, nullptr);
  EXPECT_EQ(run->files->RemoveFile(kData + L"a.txt"), kSystemDiskFull);
  EXPECT_EQ(run->files->CreateFolder(kData + L"new"), kSystemDiskFull);
  EXPECT_EQ(run->files->RemoveFolder(kData + L"empty"), kSystemDiskFull);
  EXPECT_EQ(run->files->MoveTo(kData + L"sub", kData + L"other"), kSystemDiskFull);
  EXPECT_EQ(run->files->CopyOver(kData + L"a.txt", kData + L"c.txt"), kSystemDiskFull);
  EXPECT_EQ(run->registry->DeleteTree(kUserHive, kKey), kSystemDiskFull);
  EXPECT_EQ(run->registry->SetValues(kUserHive, kKey, {MakeDwordValue(L"n", 1)}), kSystemDiskFull);
  EXPECT_EQ(run->registry->CreateKey(kUserHive, kKey + L"\\New"), kSystemDiskFull);
  EXPECT_EQ(State(), before);
}

TEST_F(ChangeRecorderTest, MakesNoChangeOfWhatCannotBeKept) {
  machine.files.fault = [](const std::string& operation, const std::wstring&) {
    return operation == "copy" || operation == "move" ? kSystemDiskFull : kSystemOk;
  };
  EXPECT_EQ(run->files->RemoveFile(kData + L"a.txt"), kSystemDiskFull);
  EXPECT_EQ(run->files->WriteBytes(kData + L"a.txt", "after"), kSystemDiskFull);
  EXPECT_EQ(machine.files.Bytes(kData + L"a.txt"), "before");
}

TEST_F(ChangeRecorderTest, MovesARemovedFileIntoTheRestorePoint) {
  EXPECT_EQ(run->files->RemoveFile(kData + L"a.txt"), kSystemOk);
  const std::vector<std::wstring>& changes = machine.files.changes;
  EXPECT_EQ(std::ranges::count(changes, L"remove " + kData + L"a.txt"), 0);
  EXPECT_EQ(machine.files.Bytes(Point().files.at(0).copy), "before");
}

TEST_F(ChangeRecorderTest, HasTheNoteOnTheDiskBeforeAFileIsMovedIntoTheRestorePoint) {
  std::vector<std::string> order;
  machine.files.fault = [&](const std::string& operation, const std::wstring&) {
    if (operation == "append" || operation == "flush" || operation == "move") {
      order.push_back(operation);
    }
    return kSystemOk;
  };
  EXPECT_EQ(run->files->RemoveFile(kData + L"a.txt"), kSystemOk);
  EXPECT_EQ(order, (std::vector<std::string>{"append", "flush", "move"}));
}

TEST_F(ChangeRecorderTest, CopiesARemovedFileThatCannotBeMoved) {
  machine.files.fault = [](const std::string& operation, const std::wstring&) {
    return operation == "move" ? kGeneralFailure : kSystemOk;
  };
  EXPECT_EQ(run->files->RemoveFile(kData + L"a.txt"), kSystemOk);
  EXPECT_EQ(machine.files.Bytes(kData + L"a.txt"), "<missing>");
  EXPECT_EQ(machine.files.Bytes(Point().files.at(0).copy), "before");
}

TEST_F(ChangeRecorderTest, DoesNotStartARegistryToolWhoseKeysCannotBeNoted) {
  const std::wstring before = machine.registry.Text(kUserHive);
  machine.files.fault = [](const std::string& operation, const std::wstring&) {
    return operation == "append" ? kSystemDiskFull : kSystemOk;
  };
  EXPECT_FALSE(Import("REGEDIT4\n\n[HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\New]\n\"a\"=\"b\"\n"));
  EXPECT_EQ(machine.registry.Text(kUserHive), before);
}

TEST_F(ChangeRecorderTest, TouchesNoRestorePoint) {
  const std::wstring own = kLocal + L"CARROVAN/restore\\x";
  EXPECT_EQ(run->files->CreateFolder(own), kAccessDenied);
  EXPECT_EQ(run->files->WriteBytes(Journal(), "forged"), kAccessDenied);
  EXPECT_EQ(run->files->RemoveFile(Journal()), kAccessDenied);
  EXPECT_EQ(run->files->MoveTo(Root(), kData + L"moved"), kAccessDenied);
}

TEST_F(ChangeRecorderTest, KeepsOneCopyOfAFileThatChangesOften) {
  for (const char* content : {"1", "2", "3"}) {
    EXPECT_EQ(run->files->WriteBytes(kData + L"a.txt", content), kSystemOk);
  }
  const std::wstring copies = Root() + L"\\" + recorder->Id() + L"\\" + kCopiesFolder;
  EXPECT_EQ(machine.files.Names(copies).size(), 1u);
}

TEST_F(ChangeRecorderTest, KeepsNothingOfTheRunsOwnFolder) {
  const std::wstring own = kLocal + L"Temp\\01234567-89AB-CDEF-0123-456789abcdef";
  EXPECT_EQ(run->files->CreateFolder(own + L"\\"), kSystemOk);
  EXPECT_EQ(run->files->WriteBytes(own + L"\\a", "x"), kSystemOk);
  EXPECT_EQ(run->files->CreateFolder(own + L"\\sub"), kSystemOk);
  EXPECT_EQ(run->files->MoveTo(own + L"\\sub", own + L"\\other"), kSystemOk);
  EXPECT_TRUE(Point().files.empty());
  EXPECT_EQ(Point().scratch, std::vector<std::wstring>{own});
}

TEST_F(ChangeRecorderTest, TakesAFolderOfSomebodyElseInTheTemporaryPathForHis) {
  machine.files.PutFolder(kLocal + L"Temp\\theirs");
  EXPECT_EQ(run->files->CreateFolder(kLocal + L"Temp\\theirs"), kAlreadyExists);
  EXPECT_EQ(run->files->WriteBytes(kLocal + L"Temp\\theirs\\a", "x"), kSystemOk);
  EXPECT_EQ(Point().files.size(), 1u);
  EXPECT_TRUE(Point().scratch.empty());
}

TEST_F(ChangeRecorderTest, LeavesNoRestorePointOfARunThatChangedNothing) {
  EXPECT_EQ(run->files->CreateFolder(kLocal + L"Temp\\01234567-89AB-CDEF-0123-456789abcdef"),
            kSystemOk);
  EXPECT_FALSE(recorder->End());
  EXPECT_TRUE(RestorePointIds(machine.files, Root()).empty());
}

TEST_F(ChangeRecorderTest, GivesTwoRunsOfOneSecondTwoNames) {
  const std::wstring first = recorder->Id();
  Begin();
  EXPECT_EQ(recorder->Id(), first + L"-2");
  EXPECT_EQ(RestorePointIds(machine.files, Root()),
            (std::vector<std::wstring>{first + L"-2", first}));
}

TEST_F(ChangeRecorderTest, TellsWhyThereCanBeNoRestorePoint) {
  machine.files.fault = [](const std::string& operation, const std::wstring&) {
    return operation == "append" ? kSystemDiskFull : kSystemOk;
  };
  auto begun = ChangeRecorder::Begin(machine.Ports(), {});
  EXPECT_FALSE(begun.object);
  EXPECT_NE(begun.reason.find(L"Restore"), std::wstring::npos);
  EXPECT_NE(begun.reason.find(L"112"), std::wstring::npos);
  machine.folders.local.reset();
  begun = ChangeRecorder::Begin(machine.Ports(), {});
  EXPECT_FALSE(begun.object);
  EXPECT_EQ(begun.reason, L"The user's application-data folder cannot be told");
}

}  // namespace
}  // namespace carrovan
