#include "preview/machine_changes.h"

#include <gtest/gtest.h>

#include "preview/overlay_machine.h"
#include "tests/support/memory_machine.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr RegistryHive kUser = RegistryHive::kCurrentUser;
const std::wstring kKey = L"SOFTWARE\\Vantric";

// A run that writes, removes and writes again is foreseen; then something does it, or not quite.
class FulfilmentTest : public testing::Test {
 protected:
  FulfilmentTest() {
    machine_.files.PutFolder(L"C:\\Users\\u\\AppData\\Local\\Temp");
    machine_.files.Put(L"C:\\d\\changes.txt", "old");
    machine_.files.Put(L"C:\\d\\goes.txt", "old");
    machine_.files.Put(L"C:\\d\\stays.txt", "same");
    machine_.registry.Root(kUser).Make(kKey).SetValue(MakeStringValue(L"a", L"old"));
    machine_.registry.Root(kUser).Make(kKey + L"\\Goes");
    const auto overlay = OverlayMachine::Open(machine_.Ports()).object;
    Change(overlay->Ports());
    foreseen_ = overlay->Changes();
  }

  static void Change(const Machine& ports) {
    EXPECT_EQ(ports.files->WriteBytes(L"C:\\d\\changes.txt", "new"), kSystemOk);
    EXPECT_EQ(ports.files->RemoveFile(L"C:\\d\\goes.txt"), kSystemOk);
    EXPECT_EQ(ports.files->WriteBytes(L"C:\\d\\stays.txt", "same"), kSystemOk);
    EXPECT_EQ(ports.registry->DeleteTree(kUser, kKey + L"\\Goes"), kSystemOk);
    EXPECT_EQ(ports.registry->CreateKey(kUser, kKey + L"\\Comes"), kSystemOk);
    EXPECT_EQ(ports.registry->SetValues(
                  kUser, kKey, {MakeStringValue(L"A", L"new"), MakeStringValue(L"", L"default")}),
              kSystemOk);
  }

  std::vector<std::wstring> Unfulfilled() {
    return UnfulfilledChanges(foreseen_, machine_.Ports());
  }

  MemoryMachine machine_;
  MachineChanges foreseen_;
};

TEST_F(FulfilmentTest, IsWholeWhenAllWasDone) {
  Change(machine_.Ports());
  EXPECT_EQ(Unfulfilled(), std::vector<std::wstring>());
  EXPECT_EQ(CountForeseen(foreseen_), 7u);
}

TEST_F(FulfilmentTest, NamesEveryItemWhenNothingWasDone) {
  const std::wstring front = L"Not as it was to become: ";
  const std::wstring key = front + L"HKEY_CURRENT_USER\\" + kKey;
  EXPECT_EQ(Unfulfilled(),
            (std::vector<std::wstring>{front + L"C:\\d\\changes.txt", front + L"C:\\d\\goes.txt",
                                       key + L"\\Comes", key + L"\\Goes",
                                       key + L", value (default)", key + L", value a"}));
}

TEST_F(FulfilmentTest, MissesAFileThatWasToComeBackTheSame) {
  Change(machine_.Ports());
  EXPECT_EQ(machine_.files.RemoveFile(L"C:\\d\\stays.txt"), kSystemOk);
  EXPECT_EQ(Unfulfilled(), std::vector<std::wstring>{L"Not as it was to become: C:\\d\\stays.txt"});
}

TEST_F(FulfilmentTest, TellsOtherContentOfTheSameSize) {
  Change(machine_.Ports());
  EXPECT_EQ(machine_.files.WriteBytes(L"C:\\d\\changes.txt", "neW"), kSystemOk);
  EXPECT_EQ(Unfulfilled().size(), 1u);
}

TEST_F(FulfilmentTest, TellsAnotherTypeOfTheSameValue) {
  Change(machine_.Ports());
  EXPECT_EQ(machine_.registry.SetValues(kUser, kKey, {MakeStringValue(L"a", L"new", kRegExpandSz)}),
            kSystemOk);
  EXPECT_EQ(Unfulfilled().size(), 1u);
}

TEST_F(FulfilmentTest, SaysWhyAFileCannotBeReadBack) {
  Change(machine_.Ports());
  machine_.files.fault = [](const std::string& operation, const std::wstring& path) {
    return operation == "read" && path == L"C:\\d\\changes.txt" ? kAccessDenied : kSystemOk;
  };
  EXPECT_EQ(Unfulfilled(), std::vector<std::wstring>{L"Cannot be read back: C:\\d\\changes.txt: " +
                                                     DescribeSystemCode(kAccessDenied)});
}

TEST_F(FulfilmentTest, AFolderInTheFilesPlaceIsWholeWhereItIsTheLastChange) {
  const FileImage file = ImageOfBytes("old");
  MachineChanges foreseen;
  foreseen.files = {{L"C:\\d\\goes.txt", Change::kRemoved, false, file, {}},
                    {L"C:\\d\\GOES.txt", Change::kAdded, true, {}, {FileKind::kFolder}}};
  EXPECT_EQ(machine_.files.RemoveFile(L"C:\\d\\goes.txt"), kSystemOk);
  EXPECT_EQ(UnfulfilledChanges(foreseen, machine_.Ports()).size(), 1u);
  machine_.files.PutFolder(L"C:\\d\\GOES.txt");
  EXPECT_EQ(UnfulfilledChanges(foreseen, machine_.Ports()), std::vector<std::wstring>());
}

}  // namespace
}  // namespace carrovan
