#pragma once

#include "platform/guid_source.h"

namespace carrovan {

// GUIDs made of random bits.
class RandomGuidSource : public GuidSource {
 public:
  std::optional<std::wstring> NewGuid() override;
};

}  // namespace carrovan
