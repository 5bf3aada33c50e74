#pragma once

#include <chrono>

namespace carrovan {

class Clock {
 public:
  virtual ~Clock() = default;

  virtual void Pause(std::chrono::milliseconds duration) = 0;
};

}  // namespace carrovan
