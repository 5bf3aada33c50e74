// The other ports of an overlay: registry, registry tool, archives, initialization files.
#include "preview/overlay_machine.h"

#include <gtest/gtest.h>

#include "platform/file_operations.h"
#include "platform/registry_tool.h"
#include "tests/support/machine_snapshot.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr RegistryHive kUser = RegistryHive::kCurrentUser;

class OverlayMachineTest : public testing::Test {
 protected:
  OverlayMachineTest() {
    machine_.files.PutFolder(L"C:\\Users\\u\\AppData\\Local\\Temp");
    machine_.registry.Root(kUser).Make(L"A\\B").SetValue(MakeDwordValue(L"n", 1));
    machine_.registry.Root(kUser).Make(L"A").SetValue(MakeStringValue(L"s", L"x"));
    before_ = TakeSnapshot(machine_);
    overlay_ = OverlayMachine::Open(machine_.Ports()).object;
  }

  Machine Ports() { return overlay_->Ports(); }
  std::vector<std::string> Changes() { return LinesOf(overlay_->Changes()); }
  bool Import(const std::string& text) {
    EXPECT_EQ(Ports().files->WriteBytes(L"C:\\x.reg", text), kSystemOk);
    return Ports().registryTool->ImportFile(L"C:\\x.reg")->WaitForEnd();
  }

  MemoryMachine machine_;
  MachineSnapshot before_;
  std::unique_ptr<OverlayMachine> overlay_;
};

TEST_F(OverlayMachineTest, ValuesAreChangedInTheOverlayOnly) {
  RegistryEditor& editor = *Ports().registry;
  EXPECT_EQ(editor.SetValues(kUser, L"a", {MakeStringValue(L"S", L"y"), MakeDwordValue(L"d", 2)}),
            kSystemOk);
  EXPECT_EQ(editor.DeleteValue(kUser, L"A\\b", L"N"), kSystemOk);
  const auto values = Ports().registry->Values(kUser, L"A");
  ASSERT_TRUE(values);
  EXPECT_EQ(values->at(0), MakeStringValue(L"s", L"y"));
  EXPECT_EQ(values->at(1), MakeDwordValue(L"d", 2));
  EXPECT_EQ(overlay_->Changes().values.size(), 3u);
  overlay_.reset();
  EXPECT_TRUE(TakeSnapshot(machine_) == before_);
}

TEST_F(OverlayMachineTest, AKeyThatWasMadeAgainShowsNothingOfBefore) {
  RegistryEditor& editor = *Ports().registry;
  EXPECT_EQ(editor.DeleteTree(kUser, L"A"), kSystemOk);
  EXPECT_FALSE(Ports().registry->CanOpenKey(kUser, L"A\\B"));
  EXPECT_EQ(editor.DeleteTree(kUser, L"A"), kFileNotFound);
  EXPECT_EQ(editor.CreateKey(kUser, L"a\\C"), kSystemOk);
  EXPECT_EQ(Ports().registry->SubkeyNames(kUser, L"A"), std::vector<std::wstring>{L"C"});
  EXPECT_TRUE(Ports().registry->Values(kUser, L"A")->empty());
  const MachineChanges changes = overlay_->Changes();
  ASSERT_EQ(changes.keys.size(), 2u);
  EXPECT_EQ(changes.keys[0].path, L"A\\B");
  EXPECT_EQ(changes.keys[0].change, Change::kRemoved);
  EXPECT_EQ(changes.keys[1].path, L"a\\C");
  EXPECT_EQ(changes.values.size(), 2u);
}

TEST_F(OverlayMachineTest, WhatIsSetBackIsNoChange) {
  RegistryEditor& editor = *Ports().registry;
  EXPECT_EQ(editor.CopyTree(kUser, L"A", kUser, L"A\\Copy"), kSystemOk);
  EXPECT_EQ(Changes().size(), 4u);
  EXPECT_EQ(editor.DeleteTree(kUser, L"A\\Copy"), kSystemOk);
  EXPECT_EQ(editor.SetValues(kUser, L"A\\B", {MakeDwordValue(L"n", 2)}), kSystemOk);
  EXPECT_EQ(editor.SetValues(kUser, L"A\\B", {MakeDwordValue(L"N", 1)}), kSystemOk);
  EXPECT_TRUE(Changes().empty());
}

TEST_F(OverlayMachineTest, TheRegistryToolImportsAFileOfTheOverlay) {
  EXPECT_TRUE(
      Import("REGEDIT4\r\n\r\n[-HKEY_CURRENT_USER\\A\\B]\r\n\r\n[HKEY_CURRENT_USER\\A]\r\n"
             "\"s\"=-\r\n\"d\"=dword:00000007\r\n\"none\"=-\r\n"));
  EXPECT_FALSE(Ports().registry->CanOpenKey(kUser, L"A\\B"));
  EXPECT_EQ(Ports().registry->Values(kUser, L"A"), std::vector{MakeDwordValue(L"d", 7)});
  EXPECT_FALSE(Import("no registry file"));
  EXPECT_FALSE(
      Ports().registryTool->ExportKey(L"HKEY_CURRENT_USER\\A", L"C:\\y.reg")->WaitForEnd());
  EXPECT_FALSE(Ports().registryTool->ImportFile(L"C:\\none.reg")->WaitForEnd());
}

class OverlayArchivesTest : public OverlayMachineTest,
                            public testing::WithParamInterface<ArchivePurpose> {};

TEST_P(OverlayArchivesTest, AreWrittenAndReadInTheOverlay) {
  EXPECT_EQ(Ports().files->WriteBytes(L"C:\\source", "content"), kSystemOk);
  const auto writer = Ports().archives->Create(L"C:\\a.zip", GetParam());
  ASSERT_TRUE(writer);
  EXPECT_EQ(writer->Add(L"sub\\x", L"C:\\source"), ArchiveResult::kDone);
  EXPECT_NE(writer->Add(L"y", L"C:\\none"), ArchiveResult::kDone);
  EXPECT_FALSE(Ports().files->Exists(L"C:\\a.zip"));
  EXPECT_EQ(writer->Close(), ArchiveResult::kDone);
  const auto reader = Ports().archives->Open(L"C:\\a.zip");
  ASSERT_TRUE(reader);
  EXPECT_EQ(reader->Extract(0, L"C:\\made\\deep\\x"), ArchiveResult::kDone);
  std::string bytes;
  EXPECT_EQ(Ports().files->ReadBytes(L"C:\\made\\deep\\x", bytes), kSystemOk);
  EXPECT_EQ(bytes, "content");
  EXPECT_EQ(reader->Extract(1, L"C:\\y"), ArchiveResult::kNoSuchItem);
  EXPECT_EQ(reader->Extract(0, L"C:\\made"), ArchiveResult::kTargetNotWritable);
  EXPECT_FALSE(machine_.files.Exists(L"C:\\a.zip"));
  EXPECT_FALSE(Ports().archives->Create(L"C:\\made", ArchivePurpose::kKeep));
  EXPECT_FALSE(Ports().archives->Open(L"C:\\none.zip"));
}

INSTANTIATE_TEST_SUITE_P(OfBothPurposes, OverlayArchivesTest,
                         testing::Values(ArchivePurpose::kKeep, ArchivePurpose::kUnpackAtOnce));

TEST_F(OverlayMachineTest, AnArchiveThatIsUnpackedAtOnceHoldsNoContentOfItsOwn) {
  EXPECT_EQ(Ports().files->WriteBytes(L"C:\\source", std::string(5000, 'x')), kSystemOk);
  const auto bytes = [this] { return TreeBytes(machine_.files, L"C:"); };
  const std::uint64_t before = bytes();
  const auto writer = Ports().archives->Create(L"C:\\a.zip", ArchivePurpose::kUnpackAtOnce);
  EXPECT_EQ(writer->Add(L"x", L"C:\\source"), ArchiveResult::kDone);
  EXPECT_EQ(writer->Close(), ArchiveResult::kDone);
  EXPECT_TRUE(Ports().files->Exists(L"C:\\a.zip"));
  const auto reader = Ports().archives->Open(L"C:\\a.zip");
  EXPECT_EQ(reader->Item(0)->sizeBytes, 5000u);
  EXPECT_EQ(reader->Extract(0, L"C:\\y"), ArchiveResult::kDone);
  EXPECT_EQ(Ports().files->FileBytes(L"C:\\y"), 5000u);
  EXPECT_EQ(bytes(), before);
  const MachineChanges changes = overlay_->Changes();
  EXPECT_GT(bytes(), before) << "an archive that a run leaves is reported as it would be left";
  EXPECT_GT(changes.files.at(0).after.sizeBytes, 5000u);
}

TEST_F(OverlayMachineTest, AnArchiveThatIsUnpackedAtOnceRefusesWhatAZipArchiveRefuses) {
  EXPECT_EQ(Ports().files->WriteBytes(L"C:\\source", "content"), kSystemOk);
  EXPECT_EQ(Ports().files->CreateFolder(L"C:\\folder"), kSystemOk);
  const auto writer = Ports().archives->Create(L"C:\\a.zip", ArchivePurpose::kUnpackAtOnce);
  EXPECT_EQ(writer->Add(L"sub/x", L"C:\\source"), ArchiveResult::kDone);
  for (const wchar_t* name : {L"", L"SUB\\X", L"..\\x", L"folder\\"}) {
    EXPECT_EQ(writer->Add(name, L"C:\\source"), ArchiveResult::kNameRefused) << ToUtf8(name);
  }
  EXPECT_EQ(writer->Add(L"y", L"C:\\none"), ArchiveResult::kSourceMissing);
  EXPECT_EQ(writer->Add(L"y", L"C:\\folder"), ArchiveResult::kSourceUnreadable);
  EXPECT_EQ(writer->Close(), ArchiveResult::kDone);
  EXPECT_FALSE(Ports().archives->Open(L"C:\\a.zip")->Item(1));
}

}  // namespace
}  // namespace carrovan
