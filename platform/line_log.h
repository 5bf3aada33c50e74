#pragma once

#include <string_view>

namespace carrovan {

// Progress told as whole lines. Each line has reached the outside when WriteLine returns; a failure
// to write is nobody's concern.
class LineLog {
 public:
  virtual ~LineLog() = default;

  // Adds the line end. A line may itself begin with a line break.
  virtual void WriteLine(std::wstring_view line) = 0;
};

}  // namespace carrovan
