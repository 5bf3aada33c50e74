#pragma once

namespace carrovan {

// How an import or a reset is run and told.
struct RunChoice {
  bool json = false;
  bool noRestorePoint = false;
};

}  // namespace carrovan
