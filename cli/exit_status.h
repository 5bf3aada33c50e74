#pragma once

namespace carrovan {

// What the command line's exit status tells a script.
enum class ExitStatus : int {
  kDone = 0,
  kFailed = 1,  // failed or refused; one line on standard error says why
  kUsage = 2,   // the command line itself is wrong
  kPartly = 3,  // done, but an item was skipped or failed; each is named on standard error
};

}  // namespace carrovan
