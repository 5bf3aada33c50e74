#pragma once

#include <string>

#include "cli/session.h"
#include "guard/guarded_run.h"

namespace carrovan {

// How an import or a reset is run and what is printed of it.
struct RunChoice : GuardChoice {
  bool json = false;
  bool verbose = false;  // also what a run reports while it works
  bool details = false;  // of a run that is only tried out, each single item
  std::wstring report;   // a page to write about the run; empty for none
};

// The words for what was done with a category.
struct CategoryWords {
  std::wstring whenChosen;  // "imported"
  std::wstring whenNot;     // "left out"
};

// Says that another run is at work, and which, and gives the status to return.
ExitStatus RefuseBesides(const Session& session, const std::wstring& otherRun);

// Refuses a run before it is begun: says why, also on the page that was asked for, and gives the
// status to return.
ExitStatus RefuseRun(const Session& session, const RunChoice& choice, const PointBegun& about,
                     const Machine& machine, const std::wstring& reason);

// Runs in the chosen way and prints what came of it. `about` is what a restore point says of the
// run.
ExitStatus RunAndPrint(const Session& session, const RunChoice& choice, const PointBegun& about,
                       const CategoryWords& words, const Machine& machine, const Run& run);

}  // namespace carrovan
