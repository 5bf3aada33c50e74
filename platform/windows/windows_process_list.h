#pragma once

#include "platform/process_list.h"

namespace carrovan {

class WindowsProcessList : public ProcessList {
 public:
  std::vector<std::wstring> ExecutableNames() const override;
};

}  // namespace carrovan
