// What the contract of file systems does not say: an overlay on a machine of its own.
#include "preview/overlay_files.h"

#include <gtest/gtest.h>

#include "platform/forwarding_ports.h"
#include "preview/overlay_machine.h"
#include "tests/support/machine_snapshot.h"
#include "text/text.h"

namespace carrovan {
namespace {

class OverlayFilesTest : public testing::Test {
 protected:
  OverlayFilesTest() {
    machine_.files.listsByName = true;
    machine_.files.PutFolder(L"C:\\Users\\u\\AppData\\Local\\Temp");
    machine_.files.Put(L"C:\\d\\a.txt", "old");
    machine_.files.Put(L"C:\\d\\sub\\b.txt", "b");
    before_ = TakeSnapshot(machine_);
  }

  void Open() {
    overlay_ = OverlayMachine::Open(machine_.Ports()).object;
    ASSERT_TRUE(overlay_);
  }
  FileSystem& Files() { return *overlay_->Ports().files; }
  std::string Content(const std::wstring& path) {
    std::string bytes = "none";
    static_cast<void>(Files().ReadBytes(path, bytes));
    return bytes;
  }
  std::vector<std::string> Changes() { return LinesOf(overlay_->Changes()); }

  MemoryMachine machine_;
  MachineSnapshot before_;
  std::unique_ptr<OverlayMachine> overlay_;
};

TEST_F(OverlayFilesTest, LeavesTheMachineAsItWas) {
  Open();
  EXPECT_EQ(Files().WriteBytes(L"C:\\d\\a.txt", "new"), kSystemOk);
  EXPECT_EQ(Files().RemoveFile(L"C:\\d\\sub\\b.txt"), kSystemOk);
  EXPECT_EQ(Files().CreateFolder(L"C:\\d\\made"), kSystemOk);
  EXPECT_EQ(machine_.files.Bytes(L"C:\\d\\a.txt"), "old");
  overlay_.reset();
  EXPECT_TRUE(TakeSnapshot(machine_) == before_);
}

TEST_F(OverlayFilesTest, AReplacementIsNeverOnTheMachine) {
  Open();
  std::unique_ptr<FileReplacement> file;
  ASSERT_EQ(Files().BeginReplacement(L"C:\\d\\a.txt", 6, file), kSystemOk);
  EXPECT_EQ(file->Append("new "), kSystemOk);
  EXPECT_EQ(Content(L"C:\\d\\a.txt"), "old");
  EXPECT_EQ(file->Append("text"), kSystemOk);
  EXPECT_EQ(file->Complete(), kSystemOk);
  EXPECT_EQ(Content(L"C:\\d\\a.txt"), "new text");
  EXPECT_EQ(machine_.files.Bytes(L"C:\\d\\a.txt"), "old");
}

TEST_F(OverlayFilesTest, NeverShowsItsSpool) {
  Open();
  EXPECT_EQ(Files().WriteBytes(L"C:\\d\\a.txt", "new"), kSystemOk);
  EXPECT_EQ(machine_.files.Names(L"C:\\Users\\u\\AppData\\Local\\Temp").size(), 1u);
  EXPECT_TRUE(ListFolder(Files(), L"C:\\Users\\u\\AppData\\Local\\Temp").empty());
  EXPECT_EQ(Changes().size(), 1u);
}

TEST_F(OverlayFilesTest, SaysWhyThereIsNoSpool) {
  machine_.files.fault = [](const std::string& operation, const std::wstring&) {
    return operation == "create folder" ? kSystemDiskFull : kSystemOk;
  };
  auto opened = OverlayMachine::Open(machine_.Ports());
  EXPECT_FALSE(opened.object);
  EXPECT_TRUE(Contains(opened.reason, DescribeSystemCode(kSystemDiskFull)));
  machine_.folders.temp = std::nullopt;
  opened = OverlayMachine::Open(machine_.Ports());
  EXPECT_FALSE(opened.object);
  EXPECT_FALSE(opened.reason.empty());
}

TEST_F(OverlayFilesTest, TellsWhyTheSpoolCannotBeWritten) {
  Open();
  machine_.files.fault = [](const std::string& operation, const std::wstring&) {
    return operation == "write" ? kSystemDiskFull : kSystemOk;
  };
  EXPECT_EQ(Files().WriteBytes(L"C:\\d\\a.txt", "new"), kSystemDiskFull);
  EXPECT_EQ(Content(L"C:\\d\\a.txt"), "old");
  EXPECT_TRUE(Changes().empty());
}

TEST_F(OverlayFilesTest, WhatComesBackIsNoChange) {
  Open();
  EXPECT_EQ(Files().WriteBytes(L"C:\\d\\A.TXT", "old"), kSystemOk);
  EXPECT_EQ(Files().MoveTo(L"C:\\d\\sub", L"C:\\d\\away"), kSystemOk);
  EXPECT_EQ(Changes().size(), 4u);
  EXPECT_EQ(Files().MoveTo(L"C:\\d\\away", L"C:\\d\\Sub"), kSystemOk);
  EXPECT_EQ(Content(L"C:\\d\\sub\\b.txt"), "b");
  EXPECT_TRUE(Changes().empty());
}

TEST_F(OverlayFilesTest, AMovedFolderTakesItsContentAndItsChangesAlong) {
  Open();
  EXPECT_EQ(Files().WriteBytes(L"C:\\d\\sub\\new.txt", "new"), kSystemOk);
  EXPECT_EQ(Files().MoveTo(L"C:\\d", L"C:\\e"), kSystemOk);
  EXPECT_EQ(Content(L"C:\\e\\sub\\new.txt"), "new");
  EXPECT_EQ(Content(L"C:\\e\\sub\\b.txt"), "b");
  EXPECT_EQ(Content(L"C:\\e\\a.txt"), "old");
  EXPECT_FALSE(Files().Exists(L"C:\\d\\sub\\b.txt"));
  EXPECT_EQ(Files().MoveTo(L"C:\\e", L"C:\\e\\sub\\e"), kInvalidName);
}

TEST_F(OverlayFilesTest, ACopyDoesNotFollowWhatItWasMadeOf) {
  Open();
  EXPECT_EQ(Files().CopyOver(L"C:\\d\\a.txt", L"C:\\d\\copy.txt"), kSystemOk);
  EXPECT_EQ(Files().AppendBytes(L"C:\\d\\a.txt", "er"), kSystemOk);
  EXPECT_EQ(Content(L"C:\\d\\copy.txt"), "old");
  EXPECT_EQ(Content(L"C:\\d\\a.txt"), "older");
  EXPECT_EQ(Files().WriteBytes(L"C:\\d\\copy.txt", "new"), kSystemOk);
  EXPECT_EQ(Content(L"C:\\d\\a.txt"), "older");
}

TEST_F(OverlayFilesTest, AFolderThatWasMadeAgainShowsNothingOfBefore) {
  Open();
  EXPECT_EQ(Files().RemoveFile(L"C:\\d\\sub\\b.txt"), kSystemOk);
  EXPECT_EQ(Files().RemoveFolder(L"C:\\d\\sub"), kSystemOk);
  EXPECT_EQ(Files().CreateFolder(L"C:\\d\\SUB"), kSystemOk);
  EXPECT_TRUE(ListFolder(Files(), L"C:\\d\\sub").empty());
  EXPECT_FALSE(Files().Exists(L"C:\\d\\sub\\b.txt"));
  EXPECT_EQ(ListFolder(Files(), L"C:\\d").back().name, L"SUB");
}

TEST_F(OverlayFilesTest, AFileInPlaceOfAFolderIsARemovalAndAnAddition) {
  Open();
  EXPECT_EQ(Files().RemoveFile(L"C:\\d\\sub\\b.txt"), kSystemOk);
  EXPECT_EQ(Files().RemoveFolder(L"C:\\d\\sub"), kSystemOk);
  EXPECT_EQ(Files().WriteBytes(L"C:\\d\\sub", "x"), kSystemOk);
  const MachineChanges changes = overlay_->Changes();
  ASSERT_EQ(changes.files.size(), 3u);
  EXPECT_EQ(changes.files[0].change, Change::kRemoved);
  EXPECT_TRUE(changes.files[0].isFolder);
  EXPECT_EQ(changes.files[1].change, Change::kAdded);
  EXPECT_FALSE(changes.files[1].isFolder);
  EXPECT_EQ(changes.files[2].path, L"C:\\d\\sub\\b.txt");
}

TEST_F(OverlayFilesTest, AReadOnlyFileMovesButIsNotReplaced) {
  machine_.files.MakeReadOnly(L"C:\\d\\a.txt");
  Open();
  EXPECT_EQ(Files().WriteBytes(L"C:\\d\\a.txt", "new"), kAccessDenied);
  EXPECT_EQ(Files().MoveTo(L"C:\\d\\a.txt", L"C:\\d\\moved.txt"), kSystemOk);
  EXPECT_TRUE(Files().IsReadOnly(L"C:\\d\\moved.txt"));
  EXPECT_EQ(Files().RemoveFile(L"C:\\d\\moved.txt"), kAccessDenied);
  EXPECT_EQ(Files().CopyOver(L"C:\\d\\moved.txt", L"C:\\d\\copy.txt"), kSystemOk);
  EXPECT_EQ(Files().RemoveFile(L"C:\\d\\copy.txt"), kSystemOk);
}

TEST_F(OverlayFilesTest, NamesThatAreTooLongAreNotMade) {
  Open();
  EXPECT_EQ(Files().WriteBytes(L"C:\\d\\" + std::wstring(256, L'x'), ""), kInvalidName);
  EXPECT_EQ(Files().WriteBytes(L"C:\\d\\" + std::wstring(255, L'x'), ""), kSystemOk);
}

// A machine on which a folder named "link" is one.
class OverlayFilesWithALink : public testing::Test {
 protected:
  class Links : public ForwardingFiles {
   public:
    using ForwardingFiles::ForwardingFiles;
    bool IsLink(const std::wstring& path) const override { return path.ends_with(L"link"); }
    SystemCode ReadFolder(const std::wstring& folder,
                          std::vector<FolderEntry>& entries) const override {
      const SystemCode code = ForwardingFiles::ReadFolder(folder, entries);
      for (FolderEntry& entry : entries) entry.isLink = entry.name == L"link";
      return code;
    }
  };

  OverlayFilesWithALink() {
    machine_.files.PutFolder(L"C:\\Users\\u\\AppData\\Local\\Temp");
    machine_.files.Put(L"C:\\d\\link\\behind.txt", "somebody's");
    overlay_ = OverlayMachine::Open(ports_).object;
  }
  FileSystem& Files() { return *overlay_->Ports().files; }

  MemoryMachine machine_;
  Links links_{machine_.files};
  const Machine own_ = machine_.Ports();
  const Machine ports_ = With<&Machine::files>(own_, links_);
  std::unique_ptr<OverlayMachine> overlay_;
};

TEST_F(OverlayFilesWithALink, WhatLiesBehindARemovedLinkIsNoChange) {
  EXPECT_EQ(Files().RemoveFolder(L"C:\\d\\link"), kSystemOk);
  const std::vector<FileChange> changes = overlay_->Changes().files;
  ASSERT_EQ(changes.size(), 1u);
  EXPECT_EQ(changes[0].path, L"C:\\d\\link");
}

TEST_F(OverlayFilesWithALink, LinkBehindWhichWasWrittenIsStillOne) {
  EXPECT_EQ(Files().WriteBytes(L"C:\\d\\link\\new.txt", "x"), kSystemOk);
  EXPECT_TRUE(Files().IsLink(L"C:\\d\\link"));
  const std::vector<FolderEntry> entries = ListFolder(Files(), L"C:\\d");
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_TRUE(entries[0].isLink);
}

}  // namespace
}  // namespace carrovan
