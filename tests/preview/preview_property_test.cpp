// A preview reports exactly what the run does, for whatever machine.
//
// CARROVAN_PREVIEW_CASES gives another number of cases, CARROVAN_PREVIEW_SEED the one seed to play.
#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <iterator>

#include "preview/machine_changes.h"
#include "preview/overlay_machine.h"
#include "tests/support/from_environment.h"
#include "tests/support/machine_snapshot.h"
#include "tests/support/random_run.h"
#include "text/text.h"

namespace carrovan {
namespace {

// Wine takes its time for every document.
#ifdef CARROVAN_WIDE_MAIN
constexpr unsigned kCases = 150;
#else
constexpr unsigned kCases = 1000;
#endif

std::vector<std::string> Plain(const std::vector<std::wstring>& lines) {
  std::vector<std::string> plain;
  for (const std::wstring& line : lines) plain.push_back(WithoutGuids(line));
  return plain;
}

// Both lists are sorted.
void ExpectSame(const std::vector<std::string>& foreseen,
                const std::vector<std::string>& happened) {
  std::vector<std::string> differing;
  std::set_symmetric_difference(foreseen.begin(), foreseen.end(), happened.begin(), happened.end(),
                                std::back_inserter(differing));
  for (const std::string& line : differing) {
    const bool wasForeseen = std::binary_search(foreseen.begin(), foreseen.end(), line);
    ADD_FAILURE() << (wasForeseen ? "did not happen: " : "was not foreseen: ") << line;
  }
}

bool IsInOrder(const MachineChanges& changes) {
  return std::is_sorted(
      changes.files.begin(), changes.files.end(),
      [](const FileChange& a, const FileChange& b) { return CompareNames(a.path, b.path) < 0; });
}

class PreviewProperty : public testing::Test {
 protected:
  // True when the run changed something.
  bool Play(unsigned seed) {
    RandomMachine machine(seed);
    const MachineSnapshot before = TakeSnapshot(machine);
    MachineChanges foreseen;
    const RunEnding preview = Preview(machine, foreseen);
    EXPECT_TRUE(TakeSnapshot(machine) == before) << "the preview left traces";

    const RunEnding real = PlayRandomRun(machine, machine.Ports());
    const MachineChanges happened = DifferenceOf(before, TakeSnapshot(machine));
    ExpectSame(LinesOf(foreseen), LinesOf(happened));
    EXPECT_TRUE(IsInOrder(foreseen));
    for (const std::wstring& line : UnfulfilledChanges(foreseen, machine.Ports())) {
      const bool isOwn = WithoutGuids(line) != ToUtf8(line);
      EXPECT_TRUE(isOwn) << ToUtf8(line);
    }
    EXPECT_EQ(Plain(preview.report.problems), Plain(real.report.problems));
    EXPECT_EQ(Plain(preview.view.messages), Plain(real.view.messages));
    EXPECT_EQ(Plain(preview.report.unextracted), Plain(real.report.unextracted));
    EXPECT_EQ(preview.view.finishText, real.view.finishText);
    merged_ += real.report.merged.size();
    dropped_ += real.report.dropped.size();
    EXPECT_EQ(Plain(preview.report.merged), Plain(real.report.merged));
    EXPECT_EQ(preview.report.dropped.size(), real.report.dropped.size());
    changedFiles_ += happened.files.size();
    changedValues_ += happened.values.size();
    problems_ += real.report.problems.size();
    return !happened.IsEmpty();
  }

  std::size_t changedFiles_ = 0;
  std::size_t changedValues_ = 0;
  std::size_t problems_ = 0;
  std::size_t merged_ = 0;
  std::size_t dropped_ = 0;

 private:
  static RunEnding Preview(RandomMachine& machine, MachineChanges& foreseen) {
    const auto overlay = OverlayMachine::Open(machine.Ports()).object;
    if (overlay == nullptr) {
      ADD_FAILURE();
      return {};
    }
    RunEnding ending = PlayRandomRun(machine, overlay->Ports());
    foreseen = overlay->Changes();
    return ending;
  }
};

TEST_F(PreviewProperty, ForetellsEveryRunExactly) {
  if (const unsigned seed = FromEnvironment("CARROVAN_PREVIEW_SEED", 0); seed != 0) {
    Play(seed);
    return;
  }
  const unsigned cases = FromEnvironment("CARROVAN_PREVIEW_CASES", kCases);
  unsigned changing = 0;
  for (unsigned seed = 1; seed <= cases && !HasFailure(); ++seed) {
    SCOPED_TRACE("CARROVAN_PREVIEW_SEED=" + std::to_string(seed));
    if (Play(seed)) ++changing;
  }
  // Cases that do nothing prove nothing.
  EXPECT_GT(changing, cases / 2);
  EXPECT_GT(changedFiles_, cases);
  EXPECT_GT(changedValues_, cases);
  EXPECT_GT(problems_, cases / 20);
  EXPECT_GT(merged_, cases / 50);
  EXPECT_GT(dropped_, cases / 50);
  std::cout << cases << " cases, " << changing << " changed something: " << changedFiles_
            << " files, " << changedValues_ << " values; " << merged_ << " merged, " << dropped_
            << " dropped, " << problems_ << " problems reported\n";
}

}  // namespace
}  // namespace carrovan
