#include "restore/undo_run.h"

#include <functional>

#include "platform/file_operations.h"
#include "platform/forwarding_ports.h"
#include "tests/restore/restore_fixture.h"

namespace carrovan {
namespace {

class UndoTest : public RestoreFixture {
 protected:
  const std::wstring before_ = State();

  static std::wstring OwnFolder() { return kLocal + L"Temp\\01234567-89ab-cdef-0123-456789ABCDEF"; }

  void Replace(const std::wstring& path, std::string_view bytes) {
    std::unique_ptr<FileReplacement> file;
    ASSERT_EQ(run->files->BeginReplacement(path, bytes.size(), file), kSystemOk);
    EXPECT_EQ(file->Append(bytes), kSystemOk);
    EXPECT_EQ(file->Complete(), kSystemOk);
  }

  void ChangeMuch() {
    EXPECT_EQ(run->files->WriteBytes(kData + L"a.txt", "after"), kSystemOk);
    Replace(kData + L"d.txt", "in parts");
    EXPECT_EQ(run->files->RemoveFile(kData + L"sub\\b.txt"), kSystemOk);
    EXPECT_EQ(run->files->RemoveFolder(kData + L"sub"), kSystemOk);
    EXPECT_EQ(run->files->WriteBytes(kData + L"sub", "a file now"), kSystemOk);
    EXPECT_EQ(run->files->RemoveFolder(kData + L"EMPTY"), kSystemOk);
    EXPECT_EQ(run->files->CreateFolder(kData + L"new"), kSystemOk);
    EXPECT_EQ(run->files->CopyOver(kData + L"a.txt", kData + L"new\\c.txt"), kSystemOk);
    EXPECT_EQ(run->files->AppendBytes(kData + L"new\\c.txt", "more"), kSystemOk);
    EXPECT_EQ(run->registry->DeleteTree(kUserHive, kKey), kSystemOk);
    EXPECT_EQ(run->registry->CreateKey(kUserHive, kKey + L"\\Made\\Below"), kSystemOk);
    EXPECT_EQ(run->registry->SetValues(kUserHive, kKey + L"\\Made", {MakeDwordValue(L"n", 1)}),
              kSystemOk);
  }
};

TEST_F(UndoTest, BringsFilesFoldersAndKeysBack) {
  ChangeMuch();
  EXPECT_NE(State(), before_);
  recorder->End();
  const UndoReport report = Undo();
  EXPECT_TRUE(report.IsComplete());
  EXPECT_EQ(State(), before_);
  EXPECT_EQ(Point().state, PointState::kUndone);
}

// Counts the looks at single paths.
class LookedAtFiles : public ForwardingFiles {
 public:
  using ForwardingFiles::ForwardingFiles;
  mutable std::size_t looks = 0;

  bool Exists(const std::wstring& path) const override {
    ++looks;
    return ForwardingFiles::Exists(path);
  }
  bool IsFolder(const std::wstring& path) const override {
    ++looks;
    return ForwardingFiles::IsFolder(path);
  }
  bool IsLink(const std::wstring& path) const override {
    ++looks;
    return ForwardingFiles::IsLink(path);
  }
};

TEST_F(UndoTest, LooksAtFoldersAndNotAtEveryFileInThem) {
  constexpr std::size_t kFiles = 40;
  for (std::size_t i = 0; i < kFiles; ++i) {
    machine.files.Put(kData + L"sub\\many\\" + std::to_wstring(i), "content");
  }
  const std::wstring before = State();
  EXPECT_TRUE(WipeFolder(*run->files, kData + L"sub"));
  recorder->End();
  Machine ports = machine.Ports();
  LookedAtFiles files(machine.files);
  ports.files = &files;
  EXPECT_TRUE(UndoChanges(Point(), {}, ports).IsComplete());
  EXPECT_EQ(State(), before);
  EXPECT_LT(files.looks, kFiles);
}

TEST_F(UndoTest, WorksAfterARunThatWasKilled) {
  ChangeMuch();
  EXPECT_TRUE(Undo().IsComplete());
  EXPECT_EQ(State(), before_);
}

TEST_F(UndoTest, ChangesNothingTheSecondTime) {
  ChangeMuch();
  recorder->End();
  static_cast<void>(Undo());
  const UndoReport again = Undo();
  EXPECT_TRUE(again.IsComplete());
  EXPECT_EQ(again.restored, 0u);
  EXPECT_EQ(State(), before_);
}

TEST_F(UndoTest, GoesOnWhereItWasKilledAtAnyCall) {
  for (std::size_t last = 1;; ++last) {
    ChangeMuch();
    recorder->End();
    std::size_t calls = 0;
    // A killed undo makes none of the calls that would have followed.
    machine.files.fault = [&](const std::string&, const std::wstring&) {
      return ++calls > last ? kGeneralFailure : kSystemOk;
    };
    static_cast<void>(
        UndoChanges(*ReadRestorePoint(machine.files, Root(), recorder->Id()), {}, machine.Ports()));
    machine.files.fault = nullptr;
    EXPECT_TRUE(Undo().IsComplete()) << last;
    EXPECT_EQ(State(), before_) << last;
    if (calls <= last) break;
    Begin();
  }
}

TEST_F(UndoTest, UndoesARegistryFile) {
  EXPECT_TRUE(
      Import("REGEDIT4\n\n[HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\VANTRIC 28.0]\n"
             "\"Text\"=\"after\"\n\"New\"=dword:1\n@=\"default\"\n\n"
             "[-HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\VANTRIC 28.0\\Sub]\n\n"
             "[HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\Deep\\Er]\n\"a\"=\"b\"\n"));
  machine.files.RemoveFile(kLocal + L"x.reg");
  recorder->End();
  EXPECT_TRUE(Undo().IsComplete());
  EXPECT_EQ(State(), before_);
}

TEST_F(UndoTest, RemovesWhatAnInterruptedRegistryImportSet) {
  machine.files.Put(kLocal + L"x.reg",
                    "REGEDIT4\n\n[HKEY_CURRENT_USER\\SOFTWARE\\Vantric\\VANTRIC 28.0]\n"
                    "\"Text\"=\"after\"\n\"New\"=dword:1\n");
  // The program was killed while the tool ran.
  static_cast<void>(run->registryTool->ImportFile(kLocal + L"x.reg"));
  machine.files.RemoveFile(kLocal + L"x.reg");
  EXPECT_TRUE(Undo().IsComplete());
  EXPECT_EQ(State(), before_);
}

TEST_F(UndoTest, UndoesACopiedTreeOfKeys) {
  machine.registry.Root(RegistryHive::kLocalMachine)
      .Make(L"Defaults\\Sub\\New")
      .SetValue(MakeDwordValue(L"d", 1));
  EXPECT_EQ(run->registry->CopyTree(RegistryHive::kLocalMachine, L"Defaults", kUserHive, kKey),
            kSystemOk);
  EXPECT_EQ(run->registry->DeleteValue(kUserHive, kKey, L"Text"), kSystemOk);
  recorder->End();
  EXPECT_TRUE(Undo().IsComplete());
  EXPECT_EQ(State(), before_);
}

TEST_F(UndoTest, KeepsAFileThatWasChangedSinceUnlessForced) {
  EXPECT_EQ(run->files->WriteBytes(kData + L"a.txt", "after"), kSystemOk);
  recorder->End();
  machine.files.Put(kData + L"a.txt", "the user's work");
  const UndoReport report = Undo();
  EXPECT_EQ(report.kept,
            std::vector<std::wstring>{L"Kept, as it was changed since: " + kData + L"a.txt"});
  EXPECT_EQ(machine.files.Bytes(kData + L"a.txt"), "the user's work");
  EXPECT_EQ(Point().state, PointState::kPartlyUndone);
  EXPECT_TRUE(Undo(true).IsComplete());
  EXPECT_EQ(State(), before_);
}

TEST_F(UndoTest, KeepsAFileThatWasChangedAfterTheUndo) {
  EXPECT_EQ(run->files->WriteBytes(kData + L"a.txt", "after"), kSystemOk);
  recorder->End();
  static_cast<void>(Undo());
  machine.files.Put(kData + L"a.txt", "the user's work");
  EXPECT_EQ(Undo().kept.size(), 1u);
  EXPECT_EQ(machine.files.Bytes(kData + L"a.txt"), "the user's work");
}

TEST_F(UndoTest, KeepsAValueThatWasChangedSinceUnlessForced) {
  EXPECT_EQ(
      run->registry->SetValues(kUserHive, kKey,
                               {MakeStringValue(L"Text", L"after"), MakeStringValue(L"New", L"x")}),
      kSystemOk);
  recorder->End();
  Key(kKey).SetValue(MakeStringValue(L"Text", L"user"));
  Key(kKey).SetValue(MakeStringValue(L"New", L"user"));
  EXPECT_EQ(Undo().kept.size(), 2u);
  EXPECT_EQ(*Key(kKey).Value(L"Text"), MakeStringValue(L"Text", L"user"));
  EXPECT_TRUE(Undo(true).IsComplete());
  EXPECT_EQ(State(), before_);
}

TEST_F(UndoTest, NeverRemovesWhatWasAddedSince) {
  EXPECT_EQ(run->files->CreateFolder(kData + L"new"), kSystemOk);
  EXPECT_EQ(run->files->WriteBytes(kData + L"new\\c.txt", "c"), kSystemOk);
  EXPECT_EQ(run->registry->CreateKey(kUserHive, kKey + L"\\Made"), kSystemOk);
  recorder->End();
  machine.files.Put(kData + L"new\\mine.txt", "mine");
  Key(kKey + L"\\Made").SetValue(MakeDwordValue(L"mine", 1));
  EXPECT_EQ(Undo(true).kept.size(), 2u);
  EXPECT_EQ(machine.files.Names(kData + L"new"), std::vector<std::wstring>{L"mine.txt"});
  EXPECT_NE(Key(kKey + L"\\Made").Value(L"mine"), nullptr);
}

TEST_F(UndoTest, PutsBackWhatTheUserHasRemovedSince) {
  EXPECT_EQ(run->files->WriteBytes(kData + L"a.txt", "after"), kSystemOk);
  recorder->End();
  machine.files.RemoveFile(kData + L"a.txt");
  EXPECT_TRUE(Undo().IsComplete());
  EXPECT_EQ(State(), before_);
}

TEST_F(UndoTest, RemovesTheRunsOwnFolderAndHalfWrittenFiles) {
  EXPECT_EQ(run->files->CreateFolder(OwnFolder()), kSystemOk);
  EXPECT_EQ(run->files->WriteBytes(OwnFolder() + L"\\a", "x"), kSystemOk);
  // Killed between the note and the end of the change.
  EXPECT_EQ(recorder->FileChanges(kData + L"a.txt"), kSystemOk);
  machine.files.Put(kData + L"~carrovan0.part", "half");
  EXPECT_TRUE(Undo().IsComplete());
  EXPECT_EQ(State(), before_);
}

TEST_F(UndoTest, LeavesAStrangersPartFileAlone) {
  machine.files.Put(kData + L"~carrovan0.part", "a stranger's");
  EXPECT_EQ(recorder->FileChanges(kData + L"a.txt"), kSystemOk);
  EXPECT_TRUE(Undo().IsComplete());
  EXPECT_EQ(machine.files.Bytes(kData + L"~carrovan0.part"), "a stranger's");
}

TEST_F(UndoTest, PutsBackOnlyWhatIsChosen) {
  ChangeMuch();
  recorder->End();
  UndoChoice choice;
  choice.includesFile = [](const FileHistory& file) { return file.path == kData + L"a.txt"; };
  choice.includesKey = [](const KeyHistory&) { return false; };
  EXPECT_EQ(UndoChanges(Point(), choice, machine.Ports()).restored, 1u);
  EXPECT_EQ(machine.files.Bytes(kData + L"a.txt"), "before");
  EXPECT_TRUE(machine.files.Has(kData + L"new\\c.txt"));
  EXPECT_EQ(Point().state, PointState::kPartlyUndone);
  EXPECT_TRUE(Undo().IsComplete());
  EXPECT_EQ(State(), before_);
}

TEST_F(UndoTest, NamesWhatCannotBePutBackAndGoesOn) {
  ChangeMuch();
  recorder->End();
  machine.files.MakeReadOnly(kData + L"a.txt");
  const UndoReport report = Undo();
  ASSERT_EQ(report.problems.size(), 1u);
  EXPECT_TRUE(report.problems[0].starts_with(L"Not put back: " + kData + L"a.txt"));
  EXPECT_EQ(machine.files.Bytes(kData + L"sub\\b.txt"), "b");
}

}  // namespace
}  // namespace carrovan
