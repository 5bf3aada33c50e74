#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "platform/file_operations.h"
#include "platform/machine.h"
#include "restore/restore_point.h"

namespace carrovan {

// Removes the restore points that were made since, of runs that a test has made on a machine whose
// profile may be a real one.
class RestorePointsOfTest {
 public:
  explicit RestorePointsOfTest(const Machine& machine) : machine_(machine), earlier_(Ids()) {}
  ~RestorePointsOfTest() {
    for (const std::wstring& id : Ids()) {
      if (std::ranges::find(earlier_, id) != earlier_.end()) continue;
      WipeFolder(*machine_.files, *RestoreRoot(*machine_.folders) + L"\\" + id);
    }
  }
  RestorePointsOfTest(const RestorePointsOfTest&) = delete;
  RestorePointsOfTest& operator=(const RestorePointsOfTest&) = delete;

 private:
  std::vector<std::wstring> Ids() const {
    const auto root = RestoreRoot(*machine_.folders);
    return root ? RestorePointIds(*machine_.files, *root) : std::vector<std::wstring>();
  }

  Machine machine_;
  std::vector<std::wstring> earlier_;
};

}  // namespace carrovan
