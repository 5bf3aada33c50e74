#pragma once

#include <thread>

#include "platform/clock.h"

namespace carrovan {

class SleepingClock : public Clock {
 public:
  void Pause(std::chrono::milliseconds duration) override { std::this_thread::sleep_for(duration); }
  std::chrono::system_clock::time_point Now() const override {
    return std::chrono::system_clock::now();
  }
};

}  // namespace carrovan
