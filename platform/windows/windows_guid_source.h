#pragma once

#include "platform/guid_source.h"

namespace carrovan {

class WindowsGuidSource : public GuidSource {
 public:
  std::optional<std::wstring> NewGuid() override;
};

}  // namespace carrovan
