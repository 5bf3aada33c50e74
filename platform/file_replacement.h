#pragma once

#include <string_view>

#include "platform/system_code.h"

namespace carrovan {

// The new content of a file, written beside the file that it is to replace. That one stays as it is
// until the content is complete; content that is given up before is gone.
class FileReplacement {
 public:
  virtual ~FileReplacement() = default;

  // Adds a part behind the others. After a failure there is nothing left to do but to give up.
  [[nodiscard]] virtual SystemCode Append(std::string_view part) = 0;

  // Puts the file in its place, in one step. The last call, and not while the old file is read.
  [[nodiscard]] virtual SystemCode Complete() = 0;
};

}  // namespace carrovan
