#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "package/run_report.h"

namespace carrovan {

// How one job went on many machines, from what each of them answered. Plain values: the texts are
// as the hosts gave them, which nobody has to trust.

enum class FleetResult { kDone, kPartly, kFailed, kUsage, kNoAnswer, kNotUnderstood };
inline constexpr std::size_t kFleetResults = 6;

// "done", "done in part"
std::wstring WordOf(FleetResult result);

// What a category became: "imported", "left out".
struct FleetCategory {
  std::wstring label;
  std::wstring outcome;
};

// What a document of a run says. Of very long lists only the beginning is kept.
struct FleetDocument {
  std::wstring verb;
  std::wstring version;
  std::wstring package;
  std::wstring restorePoint;
  bool dryRun = false;
  std::vector<FleetCategory> categories;
  std::vector<DroppedValue> dropped;
  std::size_t droppedCount = 0;  // also those that are not kept
  std::vector<std::wstring> problems;
  std::vector<std::wstring> emptied;
  std::vector<std::wstring> differences;  // of a verification
  std::vector<std::wstring> kept;         // by an undo
  std::vector<std::wstring> removed;      // restore points, by a prune
  std::size_t omitted = 0;                // items of all lists that are not kept
};

// One run of carrovan-cli for one user of a host.
struct FleetAnswer {
  int number = 0;
  std::wstring user;  // empty when it is not known
  std::optional<int> exitStatus;
  FleetResult result = FleetResult::kNotUnderstood;
  std::wstring problem;              // of the answer itself: why it is not understood
  std::vector<std::wstring> errors;  // lines of standard error
  std::size_t omittedErrors = 0;
  FleetDocument document;
};

struct FleetHost {
  std::wstring name;
  FleetResult result = FleetResult::kNoAnswer;  // the worst of its answers and its failure
  std::vector<std::wstring> failure;            // why it gave no or no whole answer
  std::vector<FleetAnswer> answers;             // by number
  std::wstring note;                            // why there can be none
};

struct FleetReport {
  std::wstring job;
  std::vector<FleetHost> hosts;        // in the order of the list
  std::vector<std::wstring> repeated;  // hosts that the list names more than once
  std::vector<std::wstring> notAsked;  // folders of hosts that are not in the list
};

// Number of hosts by result.
std::array<std::size_t, kFleetResults> TotalsOf(const FleetReport& report);

// "8 hosts: 5 done, 1 in part, 2 failed"
std::wstring SumOf(const FleetReport& report);

bool IsAllDone(const FleetReport& report);

// Whether `a` needs attention more than `b`.
bool IsWorse(FleetResult a, FleetResult b);

// What to look at first: nothing for an answer that is done.
std::wstring FirstReason(const FleetAnswer& answer);
std::wstring FirstReason(const FleetHost& host);

// Sets the host's result from what is known of it.
void SetResult(FleetHost& host);

}  // namespace carrovan
