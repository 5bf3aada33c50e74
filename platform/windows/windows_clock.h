#pragma once

#include "platform/clock.h"

namespace carrovan {

class WindowsClock : public Clock {
 public:
  void Pause(std::chrono::milliseconds duration) override;
  std::chrono::system_clock::time_point Now() const override {
    return std::chrono::system_clock::now();
  }
};

}  // namespace carrovan
