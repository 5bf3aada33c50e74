#pragma once

#include <chrono>

namespace carrovan {

class Clock {
 public:
  virtual ~Clock() = default;

  virtual void Pause(std::chrono::milliseconds duration) = 0;

  virtual std::chrono::system_clock::time_point Now() const = 0;
};

}  // namespace carrovan
