#include "preview/machine_changes.h"

#include <gtest/gtest.h>

#include "platform/forwarding_ports.h"
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

TEST_F(FulfilmentTest, ReadsNothingOfWhatIsGone) {
  std::vector<std::wstring> read;
  machine_.files.fault = [&read](const std::string& operation, const std::wstring& path) {
    if (operation == "read") read.push_back(path);
    return kSystemOk;
  };
  const auto overlay = OverlayMachine::Open(machine_.Ports()).object;
  EXPECT_EQ(overlay->Ports().files->RemoveFile(L"C:\\d\\goes.txt"), kSystemOk);
  const MachineChanges changes = overlay->Changes();
  ASSERT_EQ(changes.files.size(), 1u);
  EXPECT_EQ(changes.files[0].change, Change::kRemoved);
  EXPECT_EQ(changes.files[0].before.sizeBytes, 3u);
  EXPECT_EQ(read, std::vector<std::wstring>());
}

TEST_F(FulfilmentTest, ReadsAKeyBackOnceForAllOfItsValues) {
  class ReadKeys : public ForwardingRegistry {
   public:
    using ForwardingRegistry::ForwardingRegistry;
    mutable std::size_t reads = 0;
    std::optional<std::vector<RegistryValue>> Values(RegistryHive hive,
                                                     const std::wstring& keyPath) const override {
      ++reads;
      return ForwardingRegistry::Values(hive, keyPath);
    }
  };
  MachineChanges foreseen;
  for (int i = 0; i < 20; ++i) {
    const RegistryValue value = MakeDwordValue(std::to_wstring(i), 1);
    machine_.registry.Root(kUser).Make(kKey).SetValue(value);
    foreseen.values.push_back({kUser, kKey, value.name, std::nullopt, value});
  }
  ReadKeys registry(machine_.registry);
  Machine ports = machine_.Ports();
  ports.registry = &registry;
  EXPECT_EQ(UnfulfilledChanges(foreseen, ports), std::vector<std::wstring>());
  EXPECT_EQ(registry.reads, 1u);
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
