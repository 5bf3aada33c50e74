#pragma once

#include <gtest/gtest.h>

#include "restore/change_recorder.h"
#include "restore/recorded_machine.h"
#include "restore/restore_point.h"
#include "restore/undo_run.h"
#include "tests/support/memory_machine.h"

namespace carrovan {

inline const std::wstring kLocal = L"C:\\Users\\u\\AppData\\Local\\";
inline const std::wstring kData = kLocal + L"Vantric\\";
inline const std::wstring kKey = L"SOFTWARE\\Vantric\\VANTRIC 28.0";
inline constexpr RegistryHive kUserHive = RegistryHive::kCurrentUser;

// A machine in memory, a recorder on it, and the ports that a run would get.
class RestoreFixture : public testing::Test {
 protected:
  RestoreFixture() {
    machine.files.PutFolder(kLocal + L"Temp");
    machine.files.Put(kData + L"a.txt", "before");
    machine.files.Put(kData + L"sub\\b.txt", "b");
    machine.files.PutFolder(kData + L"empty");
    Key(kKey).SetValue(MakeStringValue(L"Text", L"before"));
    Key(kKey + L"\\Sub").SetValue(MakeDwordValue(L"Number", 1));
    Begin();
  }

  RegistryKey& Key(const std::wstring& path) { return machine.registry.Root(kUserHive).Make(path); }

  void Begin() {
    recorder = ChangeRecorder::Begin(machine.Ports(), {L"import", L"2026", L"x.ucex"}).object;
    ASSERT_TRUE(recorder);
    recorded = std::make_unique<RecordedMachine>(machine.Ports(), *recorder);
    run = std::make_unique<Machine>(recorded->Ports());
  }

  std::wstring Root() const { return kLocal + L"Carrovan\\Restore"; }
  std::wstring Journal() const { return Root() + L"\\" + recorder->Id() + L"\\" + kJournalName; }
  RestorePoint Point() {
    auto point = ReadRestorePoint(machine.files, Root(), recorder->Id());
    EXPECT_TRUE(point);
    return point.value_or(RestorePoint{});
  }
  UndoReport Undo(bool force = false) {
    UndoChoice choice;
    choice.force = force;
    return UndoChanges(Point(), choice, machine.Ports());
  }

  // Everything but the restore points, as text.
  std::wstring State() const {
    std::wstring state = machine.registry.Text(kUserHive);
    Describe(L"C:", state);
    return state;
  }

  bool Import(const std::string& regFile) {
    machine.files.Put(kLocal + L"x.reg", regFile);
    auto command = run->registryTool->ImportFile(kLocal + L"x.reg");
    return command && command->WaitForEnd();
  }

  MemoryMachine machine;
  std::unique_ptr<ChangeRecorder> recorder;
  std::unique_ptr<RecordedMachine> recorded;
  std::unique_ptr<Machine> run;

 private:
  void Describe(const std::wstring& folder, std::wstring& state) const {
    if (folder + L"\\" == kLocal + L"Carrovan\\") return;
    for (const std::wstring& name : machine.files.Names(folder)) {
      const std::wstring path = folder + L"\\" + name;
      state += path + L"\n";
      if (machine.files.IsFolder(path)) {
        Describe(path, state);
      } else {
        state += FromUtf8(machine.files.Bytes(path)) + L"\n";
      }
    }
  }
};

}  // namespace carrovan
