#pragma once

#include <string>
#include <vector>

namespace carrovan {

// The processes that run on the machine.
class ProcessList {
 public:
  virtual ~ProcessList() = default;

  // Names of the executables without their folders; empty when the system does not tell.
  virtual std::vector<std::wstring> ExecutableNames() const = 0;
};

// A machine on which nothing runs.
class NoProcesses : public ProcessList {
 public:
  std::vector<std::wstring> ExecutableNames() const override { return {}; }
};

}  // namespace carrovan
