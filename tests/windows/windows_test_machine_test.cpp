#include "tests/windows/windows_test_machine.h"

#include <gtest/gtest.h>

#include "platform/windows/windows_registry.h"

namespace carrovan {
namespace {

constexpr RegistryHive kUser = RegistryHive::kCurrentUser;
constexpr RegistryHive kLocal = RegistryHive::kLocalMachine;

TEST(WindowsTestMachine, GivesEachMachineItsOwnNameAndFolder) {
  const auto first = NewTestMachine();
  const auto second = NewTestMachine();
  EXPECT_NE(first->product.productName, second->product.productName);
  EXPECT_NE(first->ScratchFolder(), second->ScratchFolder());
  EXPECT_TRUE(WindowsFileSystem().Exists(first->ScratchFolder()));
}

TEST(WindowsTestMachine, LeavesNothingBehind) {
  const WindowsFileSystem files;
  const WindowsRegistry registry;
  const WindowsKnownFolders folders;
  const auto before = ListFolder(files, folders.TempPath().value()).size();
  auto machine = NewTestMachine();
  const std::wstring& name = machine->product.productName;
  const std::wstring local = folders.LocalAppData().value() + L"\\Vantric\\" + name;
  const std::wstring long_ =
      local + L"\\" + std::wstring(200, L'a') + L"\\" + std::wstring(200, L'b');
  const std::wstring liveKey = L"SOFTWARE\\Vantric\\" + name + L" 28.0";
  const std::wstring defaults = L"SOFTWARE\\Vantric\\New User Settings\\" + name + L" 28.0";
  machine->PutFile(long_ + L"\\a.txt", "a");
  machine->PutFile(local + L"\\locked.txt", "a");
  machine->MakeUnreadable(local + L"\\locked.txt");
  machine->PutFile(local + L"\\read-only.txt", "a");
  machine->MakeReadOnly(local + L"\\read-only.txt");
  machine->MakeFolder(local + L"\\closed");
  machine->MakeFolderUnwritable(local + L"\\closed");
  machine->PutKey(kUser, liveKey + L"\\General");
  EXPECT_TRUE(machine->MakeKeyUnreadable(kUser, liveKey));
  machine->PutKey(kLocal, defaults);
  const std::wstring staging =
      folders.TempPath().value() + machine->Ports().guids->NewGuid().value().substr(1, 36);
  ASSERT_EQ(machine->Ports().files->CreateFolder(staging), kSystemOk);
  machine.reset();
  EXPECT_FALSE(files.Exists(local));
  EXPECT_FALSE(files.Exists(staging));
  EXPECT_EQ(ListFolder(files, folders.TempPath().value()).size(), before);
  EXPECT_EQ(DeleteRegistryTree(kUser, liveKey), kFileNotFound);
  EXPECT_EQ(DeleteRegistryTree(kLocal, defaults), kFileNotFound);
}

TEST(WindowsTestMachine, RemovesWhatADeadTestProgramLeft) {
  const auto earlier = NewTestMachine();
  WindowsFileSystem files;
  const std::wstring scratch =
      WindowsKnownFolders().TempPath().value() + L"Carrovan test VANTRIC-T999999999-1";
  const std::wstring key = L"SOFTWARE\\Vantric\\VANTRIC-T999999999-1 28.0";
  ASSERT_EQ(files.CreateFolder(scratch), kSystemOk);
  ASSERT_EQ(CreateRegistryKey(kUser, key + L"\\General"), kSystemOk);
  const auto later = NewTestMachine();
  EXPECT_FALSE(files.Exists(scratch));
  EXPECT_FALSE(WindowsRegistry().CanOpenKey(kUser, key));
}

}  // namespace
}  // namespace carrovan
