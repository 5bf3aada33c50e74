#pragma once

#include "platform/clock.h"

namespace carrovan {

class WindowsClock : public Clock {
 public:
  void Pause(std::chrono::milliseconds duration) override;
};

}  // namespace carrovan
