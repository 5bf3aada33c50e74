// What an undo counts, keeps and leaves alone, and what a run with a restore point refuses.
#include <set>

#include "platform/forwarding_ports.h"
#include "tests/restore/restore_fixture.h"

namespace carrovan {
namespace {

using UndoExactness = RestoreFixture;

TEST_F(UndoExactness, CountsEveryValueThatWasPutBack) {
  RegistryKey& key = Key(kKey);
  key.SetValue(MakeStringValue(L"Second", L"before"));
  key.SetValue(MakeStringValue(L"Third", L"before"));
  EXPECT_EQ(
      run->registry->SetValues(kUserHive, kKey,
                               {MakeStringValue(L"Text", L"x"), MakeStringValue(L"Second", L"x"),
                                MakeStringValue(L"Third", L"x")}),
      kSystemOk);
  recorder->End();
  EXPECT_EQ(Undo().restored, 3u);
}

TEST_F(UndoExactness, ValueThatTheUserHasPutBackIsNobodysChange) {
  Key(kKey).SetValue(MakeStringValue(L"Second", L"before"));
  const std::wstring before = State();
  EXPECT_EQ(run->registry->SetValues(
                kUserHive, kKey,
                {MakeStringValue(L"Text", L"after"), MakeStringValue(L"Second", L"after")}),
            kSystemOk);
  recorder->End();
  Key(kKey).SetValue(MakeStringValue(L"Text", L"before"));
  const UndoReport report = Undo();
  EXPECT_TRUE(report.IsComplete());
  EXPECT_EQ(report.restored, 1u);
  EXPECT_EQ(State(), before);
}

TEST_F(UndoExactness, WhatWasChangedSinceInACopiedKeyIsKept) {
  const std::wstring copy = L"SOFTWARE\\Vantric\\Copy";
  EXPECT_EQ(run->registry->CopyTree(kUserHive, kKey, kUserHive, copy), kSystemOk);
  recorder->End();
  Key(copy).SetValue(MakeStringValue(L"Text", L"the user's"));
  EXPECT_FALSE(Undo().kept.empty());
  const auto values = machine.registry.Values(kUserHive, copy);
  ASSERT_TRUE(values);
  EXPECT_EQ(*values, std::vector{MakeStringValue(L"Text", L"the user's")});
}

TEST_F(UndoExactness, UndoOfKeysOrOfFilesAloneIsAPartOfOne) {
  EXPECT_EQ(run->files->WriteBytes(kData + L"a.txt", "after"), kSystemOk);
  EXPECT_EQ(run->registry->DeleteTree(kUserHive, kKey), kSystemOk);
  recorder->End();
  UndoChoice choice;
  choice.includesKey = [](const KeyHistory&) { return false; };
  EXPECT_TRUE(UndoChanges(Point(), choice, machine.Ports()).IsComplete());
  EXPECT_EQ(Point().state, PointState::kPartlyUndone);
  choice = {};
  choice.includesFile = [](const FileHistory&) { return false; };
  EXPECT_TRUE(UndoChanges(Point(), choice, machine.Ports()).IsComplete());
  EXPECT_EQ(Point().state, PointState::kPartlyUndone);
}

TEST_F(UndoExactness, UndoOfNothingWritesNothing) {
  RestorePoint empty;
  empty.folder = Root() + L"\\2026-01-01T000000Z";
  const std::size_t changes = machine.files.changes.size();
  EXPECT_TRUE(UndoChanges(empty, {}, machine.Ports()).IsComplete());
  EXPECT_EQ(machine.files.changes.size(), changes);
}

TEST_F(UndoExactness, NoKeyIsMadeWhenTheOneAboveCannotBeNoted) {
  const std::wstring before = State();
  int appends = 0;
  machine.files.fault = [&](const std::string& operation, const std::wstring&) {
    return operation == "append" && ++appends == 1 ? kSystemDiskFull : kSystemOk;
  };
  EXPECT_EQ(run->registry->CreateKey(kUserHive, kKey + L"\\Made\\Below"), kSystemDiskFull);
  EXPECT_EQ(State(), before);
}

TEST_F(UndoExactness, NoRunTouchesTheRestorePoints) {
  EXPECT_EQ(run->files->RemoveFolder(Root()), kAccessDenied);
  EXPECT_EQ(run->files->WriteBytes(Journal(), ""), kAccessDenied);
  EXPECT_EQ(run->files->MoveTo(Root(), kLocal + L"elsewhere"), kAccessDenied);
}

TEST_F(UndoExactness, MovedFolderComesBackWithWhatIsInIt) {
  const std::wstring before = State();
  EXPECT_EQ(run->files->MoveTo(kData + L"sub", kData + L"other"), kSystemOk);
  EXPECT_EQ(machine.files.Bytes(kData + L"other\\b.txt"), "b");
  recorder->End();
  EXPECT_TRUE(Undo().IsComplete());
  EXPECT_EQ(State(), before);
}

TEST_F(UndoExactness, ArchiveThatCannotBeNotedSaysWhy) {
  const std::pair<SystemCode, ArchiveResult> kRows[] = {
      {kSystemDiskFull, ArchiveResult::kDiskFull},
      {kAccessDenied, ArchiveResult::kTargetNotWritable}};
  for (const auto& [code, result] : kRows) {
    const auto writer = run->archives->Create(kData + L"x.zip", ArchivePurpose::kUnpackAtOnce);
    ASSERT_TRUE(writer);
    machine.files.fault = [code = code](const std::string& operation, const std::wstring&) {
      return operation == "append" ? code : kSystemOk;
    };
    EXPECT_EQ(writer->Close(), result);
    machine.files.fault = nullptr;
  }
}

// Files among which some folders are links, which moving takes along.
class LinkFiles : public ForwardingFiles {
 public:
  using ForwardingFiles::ForwardingFiles;
  std::set<std::wstring> links;

  bool IsLink(const std::wstring& path) const override { return links.contains(path); }
  SystemCode ReadFolder(const std::wstring& folder,
                        std::vector<FolderEntry>& entries) const override {
    const SystemCode code = ForwardingFiles::ReadFolder(folder, entries);
    for (FolderEntry& entry : entries) entry.isLink = IsLink(folder + L"\\" + entry.name);
    return code;
  }
  SystemCode MoveTo(const std::wstring& source, const std::wstring& target) override {
    const SystemCode code = ForwardingFiles::MoveTo(source, target);
    if (code == kSystemOk && links.erase(source) > 0) links.insert(target);
    return code;
  }
};

class UndoOfLinks : public RestoreFixture {
 protected:
  UndoOfLinks() {
    machine.files.Put(kLink + L"\\behind.txt", "somebody's");
    links_.links.insert(kLink);
    recorder = ChangeRecorder::Begin(ports_, {L"import", L"2026", L"x.ucex"}).object;
    recorded = std::make_unique<RecordedMachine>(ports_, *recorder);
    run = std::make_unique<Machine>(recorded->Ports());
  }

  const std::wstring kLink = kData + L"link";
  LinkFiles links_{machine.files};
  const Machine own_ = machine.Ports();
  const Machine ports_ = With<&Machine::files>(own_, links_);
};

TEST_F(UndoOfLinks, RemovedLinkComesBackWithoutALookBehindIt) {
  EXPECT_EQ(run->files->RemoveFolder(kLink), kSystemOk);
  EXPECT_FALSE(links_.Exists(kLink));
  recorder->End();
  const auto point = ReadRestorePoint(links_, Root(), recorder->Id());
  ASSERT_TRUE(point);
  ASSERT_EQ(point->files.size(), 1u);
  EXPECT_EQ(point->files[0].before.kind, FileKind::kLink);
  EXPECT_TRUE(UndoChanges(*point, {}, ports_).IsComplete());
  EXPECT_TRUE(links_.IsLink(kLink));
  EXPECT_EQ(machine.files.Bytes(kLink + L"\\behind.txt"), "somebody's");
}

TEST_F(UndoOfLinks, RemovedLinkComesBackWhereTheRunPutAFile) {
  EXPECT_EQ(run->files->RemoveFile(kLink), kSystemOk);
  EXPECT_EQ(run->files->WriteBytes(kLink, "new"), kSystemOk);
  recorder->End();
  const auto point = ReadRestorePoint(links_, Root(), recorder->Id());
  ASSERT_TRUE(point);
  EXPECT_TRUE(UndoChanges(*point, {}, ports_).IsComplete());
  EXPECT_TRUE(links_.IsLink(kLink));
  EXPECT_EQ(machine.files.Bytes(kLink + L"\\behind.txt"), "somebody's");
}

TEST_F(UndoOfLinks, LinkAmongTheRestorePointsStays) {
  const std::wstring link = Root() + L"\\link";
  machine.files.PutFolder(link);
  links_.links.insert(link);
  EXPECT_EQ(run->files->RemoveFolder(link), kAccessDenied);
  EXPECT_EQ(run->files->RemoveFile(link), kAccessDenied);
  EXPECT_TRUE(links_.IsLink(link));
}

}  // namespace
}  // namespace carrovan
