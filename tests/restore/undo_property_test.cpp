// Whatever a run does to whatever machine, an undo brings the machine back as it was.
#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>

#include "registry_text/registry_file_writer.h"
#include "restore/recorded_machine.h"
#include "restore/restore_point.h"
#include "restore/undo_run.h"
#include "tests/support/from_environment.h"
#include "tests/support/machine_snapshot.h"
#include "tests/support/random_run.h"
#include "text/text.h"

namespace carrovan {
namespace {

// Wine takes its time for every document.
#ifdef CARROVAN_WIDE_MAIN
constexpr unsigned kCases = 100;
#else
constexpr unsigned kCases = 500;
#endif

// All but the restore points themselves. A key that the run removed and made again keeps the case
// of its new name, as no key can be renamed.
MachineSnapshot Snapshot(const RandomMachine& machine) {
  const std::wstring own = L"C:\\Users\\u\\AppData\\Local\\Carrovan";
  MachineSnapshot snapshot = TakeSnapshot(machine);
  std::erase_if(snapshot.files, [&own](const auto& entry) {
    return CompareNames(entry.second.path.substr(0, own.size()), own) == 0;
  });
  for (auto& [folded, key] : snapshot.keys) key.clear();
  for (auto& [folded, value] : snapshot.values) value.key = FromUtf16(folded.second);
  return snapshot;
}

class UndoProperty : public testing::Test {
 protected:
  // Plays a run, whole or only until the n-th operation on files from which on the disk refuses
  // everything, as a killed program would do no more; then undoes it. Gives the operations.
  std::size_t Play(unsigned seed, std::size_t lastOperation) {
    RandomMachine machine(seed);
    const MachineSnapshot before = Snapshot(machine);
    std::size_t operations = 0;
    {
      const auto recorder = ChangeRecorder::Begin(machine.Ports(), {L"import", L"", L""}).object;
      if (!recorder) {
        ADD_FAILURE();
        return 0;
      }
      RecordedMachine recorded(machine.Ports(), *recorder);
      machine.files.fault = [&](const std::string&, const std::wstring&) {
        return ++operations > lastOperation ? kGeneralFailure : kSystemOk;
      };
      PlayRandomRun(machine, recorded.Ports());
      machine.files.fault = nullptr;
      if (operations <= lastOperation) recorder->End();
    }
    if (Snapshot(machine) != before) ++changing_;
    ExpectUndone(machine, before);
    ExpectUndone(machine, before);
    return operations;
  }

  void ExpectUndone(RandomMachine& machine, const MachineSnapshot& before) {
    const std::wstring root = *RestoreRoot(machine.folders);
    for (const std::wstring& id : RestorePointIds(machine.files, root)) {
      const auto point = ReadRestorePoint(machine.files, root, id);
      ASSERT_TRUE(point);
      // A random package may name keys and folders of anybody.
      UndoChoice choice;
      choice.trusted = true;
      const UndoReport report = UndoChanges(*point, choice, machine.Ports());
      for (const std::wstring& line : report.kept) ADD_FAILURE() << ToUtf8(line);
      for (const std::wstring& line : report.problems) ADD_FAILURE() << ToUtf8(line);
    }
    const MachineSnapshot after = Snapshot(machine);
    if (after == before) return;
    for (const std::string& line : LinesOf(DifferenceOf(before, after))) ADD_FAILURE() << line;
    ADD_FAILURE() << "not as before";
    ExpectSpelledAlike(before, after);
  }

  // Finds names that are the same to the system but not to the eye.
  static void ExpectSpelledAlike(const MachineSnapshot& before, const MachineSnapshot& after) {
    const std::vector<std::string> now = Spelled(after);
    for (const std::string& line : Spelled(before)) {
      if (!std::binary_search(now.begin(), now.end(), line)) ADD_FAILURE() << "was: " << line;
    }
  }

  static std::vector<std::string> Spelled(const MachineSnapshot& snapshot) {
    std::vector<std::string> lines;
    for (const auto& [folded, file] : snapshot.files) {
      lines.push_back(ToUtf8(file.path) + (file.isReadOnly ? " read-only" : ""));
    }
    for (const auto& [folded, value] : snapshot.values) {
      lines.push_back(
          ToUtf8(value.key + L" " + value.value.name + L" " + RegistryValueText(value.value)));
    }
    std::sort(lines.begin(), lines.end());
    return lines;
  }

  unsigned changing_ = 0;
};

TEST_F(UndoProperty, BringsEveryMachineBackAsItWas) {
  const unsigned first = FromEnvironment("CARROVAN_UNDO_SEED", 1);
  const unsigned cases = FromEnvironment("CARROVAN_UNDO_CASES", kCases);
  std::size_t broken = 0;
  for (unsigned seed = first; seed < first + cases && !HasFailure(); ++seed) {
    SCOPED_TRACE("CARROVAN_UNDO_SEED=" + std::to_string(seed));
    const std::size_t operations = Play(seed, std::size_t{1} << 30);
    if (operations == 0) continue;
    // Somewhere in the same run, another place for each seed.
    const std::size_t last = (seed * std::size_t{7919}) % operations;
    SCOPED_TRACE("broken off at operation " + std::to_string(last));
    Play(seed, last);
    ++broken;
  }
  EXPECT_GT(changing_, cases / 2);
  std::cout << cases << " runs undone, and " << broken << " that were broken off\n";
}

}  // namespace
}  // namespace carrovan
