#pragma once

namespace carrovan {

// How an import or a reset is run and told.
struct RunChoice {
  bool json = false;
  bool dryRun = false;  // only tell what would change
  bool verify = false;  // read back what was to be changed
  bool noRestorePoint = false;
};

}  // namespace carrovan
