#include "restore/change_recorder.h"

#include <algorithm>
#include <functional>

#include "platform/forwarding_ports.h"
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

TEST_F(ChangeRecorderTest, LooksForALinkOnlyOnceWhereItWasAnnounced) {
  class LinkLooks : public ForwardingFiles {
   public:
    using ForwardingFiles::ForwardingFiles;
    mutable std::size_t looks = 0;
    bool IsLink(const std::wstring& path) const override {
      ++looks;
      return ForwardingFiles::IsLink(path);
    }
  };
  constexpr std::size_t kFiles = 40;
  for (std::size_t i = 0; i < kFiles; ++i) {
    machine.files.Put(kData + L"many\\" + std::to_wstring(i), "content");
  }
  Machine ports = machine.Ports();
  LinkLooks files(machine.files);
  ports.files = &files;
  RecordedMachine front(ports, *recorder);
  const Machine recordedPorts = front.Ports();
  EXPECT_TRUE(WipeFolder(*recordedPorts.files, kData + L"many"));
  EXPECT_FALSE(machine.files.Exists(kData + L"many"));
  EXPECT_LT(files.looks, kFiles);
}

TEST_F(ChangeRecorderTest, KeepsItsJournalOpen) {
  std::size_t opened = 0;
  std::size_t notes = 0;
  machine.files.fault = [&](const std::string& operation, const std::wstring& path) {
    if (path != Journal()) return kSystemOk;
    opened += operation == "open to append" ? 1 : 0;
    notes += operation == "append" ? 1 : 0;
    return kSystemOk;
  };
  for (int i = 0; i < 40; ++i) {
    EXPECT_EQ(run->files->WriteBytes(kData + std::to_wstring(i), "new"), kSystemOk);
  }
  EXPECT_GE(notes, 40u) << "each change is noted before the next one";
  EXPECT_EQ(opened, 0u) << "it is open since the first line";
}

TEST_F(ChangeRecorderTest, LetsGoOfItsJournalWhenItGoes) {
  EXPECT_EQ(run->files->CreateFolder(kData + L"made"), kSystemOk);
  EXPECT_EQ(run->files->RemoveFolder(kData + L"made"), kSystemOk);
  std::unique_ptr<FileAppender> held;
  ASSERT_EQ(machine.files.OpenToAppend(Journal(), held), kSystemOk);
  EXPECT_NE(machine.files.MoveTo(Point().folder, kData + L"moved"), kSystemOk);
  held.reset();
  EXPECT_FALSE(recorder->End());
  EXPECT_FALSE(machine.files.Exists(Journal()));
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

TEST_F(ChangeRecorderTest, NotesWhatAChangeLeftWithoutReadingIt) {
  machine.files.Put(kData + L"from.txt", "unpacked");
  const auto writer =
      machine.Ports().archives->Create(kLocal + L"Temp\\x.zip", ArchivePurpose::kKeep);
  ASSERT_EQ(writer->Add(L"c.txt", kData + L"from.txt"), ArchiveResult::kDone);
  ASSERT_EQ(writer->Close(), ArchiveResult::kDone);
  const auto archive = run->archives->Open(kLocal + L"Temp\\x.zip");
  std::size_t reads = 0;
  machine.files.fault = [&](const std::string& operation, const std::wstring&) {
    reads += operation == "read" ? 1 : 0;
    return kSystemOk;
  };
  EXPECT_EQ(archive->Extract(0, kData + L"c.txt"), ArchiveResult::kDone);
  EXPECT_EQ(run->files->WriteBytes(kData + L"d.txt", "written"), kSystemOk);
  std::unique_ptr<FileReplacement> part;
  EXPECT_EQ(run->files->BeginReplacement(kData + L"e.txt", 5, part), kSystemOk);
  EXPECT_EQ(part->Append("in "), kSystemOk);
  EXPECT_EQ(part->Append("parts"), kSystemOk);
  EXPECT_EQ(part->Complete(), kSystemOk);
  part.reset();
  EXPECT_TRUE(recorder->End());
  EXPECT_EQ(reads, 0u);
  const RestorePoint point = Point();
  ASSERT_EQ(point.files.size(), 3u);
  EXPECT_EQ(point.files[0].after, ImageOfBytes("unpacked"));
  EXPECT_EQ(point.files[1].after, ImageOfBytes("written"));
  EXPECT_EQ(point.files[2].after, ImageOfBytes("in parts"));
  EXPECT_TRUE(Undo().IsComplete());
}

TEST_F(ChangeRecorderTest, NotesWhatIsThereAfterAChangeThatFailed) {
  machine.files.fault = [](const std::string& operation, const std::wstring& path) {
    return operation == "write" && path == kData + L"a.txt" ? kSystemDiskFull : kSystemOk;
  };
  EXPECT_EQ(run->files->WriteBytes(kData + L"a.txt", "after"), kSystemDiskFull);
  EXPECT_EQ(run->files->WriteBytes(kData + L"new.txt", "new"), kSystemOk);
  EXPECT_TRUE(recorder->End());
  EXPECT_EQ(Point().files[0].after, ImageOfBytes("before"));
}

TEST_F(ChangeRecorderTest, LeavesNothingOfARunThatChangedNothing) {
  EXPECT_EQ(run->files->CreateFolder(kLocal + L"Temp\\01234567-89AB-CDEF-0123-456789abcdef"),
            kSystemOk);
  EXPECT_FALSE(recorder->End());
  EXPECT_FALSE(machine.files.Has(Root()));
}

TEST_F(ChangeRecorderTest, LeavesNothingOfARunThatLeftEverythingAsItWas) {
  const std::wstring before = State();
  EXPECT_EQ(run->files->CreateFolder(kData + L"new"), kSystemOk);
  EXPECT_EQ(run->files->WriteBytes(kData + L"new\\c.txt", "c"), kSystemOk);
  EXPECT_TRUE(WipeFolder(*run->files, kData + L"new"));
  EXPECT_TRUE(WipeFolder(*run->files, kData + L"sub"));
  EXPECT_EQ(run->files->CreateFolder(kData + L"sub"), kSystemOk);
  EXPECT_EQ(run->files->WriteBytes(kData + L"sub\\b.txt", "b"), kSystemOk);
  EXPECT_EQ(run->files->WriteBytes(kData + L"a.txt", "before"), kSystemOk);
  EXPECT_EQ(run->registry->SetValues(kUserHive, kKey, {MakeStringValue(L"Text", L"before")}),
            kSystemOk);
  EXPECT_EQ(run->registry->CreateKey(kUserHive, kKey + L"\\New"), kSystemOk);
  EXPECT_EQ(run->registry->DeleteTree(kUserHive, kKey + L"\\New"), kSystemOk);
  EXPECT_FALSE(recorder->End());
  EXPECT_FALSE(machine.files.Has(Root()));
  EXPECT_EQ(State(), before);
}

TEST_F(ChangeRecorderTest, LeavesNothingOfARunThatWasNotLetRemoveAFile) {
  machine.files.MakeReadOnly(kData + L"a.txt");
  EXPECT_EQ(run->files->RemoveFile(kData + L"a.txt"), kAccessDenied);
  EXPECT_FALSE(recorder->End());
  EXPECT_FALSE(machine.files.Has(Root()));
}

TEST_F(ChangeRecorderTest, KeepsTheRestorePointOfARunThatChangedOneThing) {
  const std::vector<std::function<void()>> changes = {
      [&] { EXPECT_EQ(run->files->WriteBytes(kData + L"a.txt", "after!"), kSystemOk); },
      [&] { EXPECT_EQ(run->files->RemoveFolder(kData + L"empty"), kSystemOk); },
      [&] {
        EXPECT_EQ(run->registry->SetValues(kUserHive, kKey, {MakeStringValue(L"Text", L"after")}),
                  kSystemOk);
      },
      [&] { EXPECT_EQ(run->registry->CreateKey(kUserHive, kKey + L"\\New"), kSystemOk); },
      [&] { EXPECT_EQ(run->registry->DeleteTree(kUserHive, kKey + L"\\Sub"), kSystemOk); },
  };
  for (const auto& change : changes) {
    Begin();
    change();
    EXPECT_TRUE(recorder->End());
    EXPECT_EQ(Point().state, PointState::kFinished);
    EXPECT_TRUE(Undo().IsComplete());
  }
}

TEST_F(ChangeRecorderTest, KeepsTheRestorePointOfARunThatSpelledAFileAnew) {
  EXPECT_EQ(run->files->RemoveFile(kData + L"a.txt"), kSystemOk);
  EXPECT_EQ(run->files->WriteBytes(kData + L"A.TXT", "before"), kSystemOk);
  EXPECT_TRUE(recorder->End());
}

TEST_F(ChangeRecorderTest, KeepsTheRestorePointOfARunThatSpelledAKeyAnew) {
  EXPECT_EQ(run->registry->DeleteTree(kUserHive, kKey + L"\\Sub"), kSystemOk);
  EXPECT_EQ(run->registry->CreateKey(kUserHive, kKey + L"\\SUB"), kSystemOk);
  EXPECT_EQ(run->registry->SetValues(kUserHive, kKey + L"\\SUB", {MakeDwordValue(L"Number", 1)}),
            kSystemOk);
  EXPECT_TRUE(recorder->End());
}

TEST_F(ChangeRecorderTest, KeepsTheRestorePointWhenItIsNotKnownWhatTheDiskHolds) {
  EXPECT_EQ(run->files->WriteBytes(kData + L"a.txt", "before"), kSystemOk);
  machine.files.fault = [](const std::string& operation, const std::wstring&) {
    return operation == "flush" ? kGeneralFailure : kSystemOk;
  };
  EXPECT_TRUE(recorder->End());
}

TEST_F(ChangeRecorderTest, LeavesTheRestorePointsOfOtherRunsAlone) {
  EXPECT_EQ(run->files->WriteBytes(kData + L"a.txt", "after!"), kSystemOk);
  EXPECT_TRUE(recorder->End());
  const std::wstring first = recorder->Id();
  Begin();
  EXPECT_FALSE(recorder->End());
  EXPECT_EQ(machine.files.Names(Root()), std::vector<std::wstring>{first});
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
