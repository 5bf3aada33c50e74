#pragma once

#include "package/run_report.h"
#include "tests/support/fakes.h"
#include "tests/support/random_machine.h"

namespace carrovan {

// How a run ended, as it was reported.
struct RunEnding {
  RunReport report;
  RecordingView view;
  ProductContext context;
};

// Does what a random machine asks for, from the opening of the program to its end, through the
// given ports, which may be the machine's own or others in front of them.
RunEnding PlayRandomRun(const RandomMachine& plan, const Machine& ports);

}  // namespace carrovan
