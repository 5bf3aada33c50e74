#pragma once

#include "cli/session.h"
#include "platform/line_log.h"

namespace carrovan {

// A log whose lines are a verb's result.
class ConsoleLog : public LineLog {
 public:
  explicit ConsoleLog(const Session& session) : session_(session) {}

  void WriteLine(std::wstring_view line) override { session_.Print(line); }

 private:
  const Session& session_;
};

}  // namespace carrovan
