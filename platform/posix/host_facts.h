#pragma once

#include <thread>

#include "platform/system_facts.h"

namespace carrovan {

// GUIDs made of random bits.
class RandomGuidSource : public GuidSource {
 public:
  std::optional<std::wstring> NewGuid() override;
};

class SleepingClock : public Clock {
 public:
  void Pause(std::chrono::milliseconds duration) override { std::this_thread::sleep_for(duration); }
  std::chrono::system_clock::time_point Now() const override {
    return std::chrono::system_clock::now();
  }
};

class Utf8CodePage : public CodePage {
 public:
  std::u16string Decode(std::string_view bytes) const override;
  std::string Encode(std::u16string_view text) const override;
};

}  // namespace carrovan
