#include <unistd.h>

#include <csignal>
#include <cstdio>

#include "platform/console.h"
#include "platform/text.h"

namespace carrovan {
namespace {

bool Write(std::FILE* stream, std::wstring_view text) {
  const std::string utf8 = ToUtf8(text);
  const bool taken = std::fwrite(utf8.data(), 1, utf8.size(), stream) == utf8.size();
  return std::fflush(stream) == 0 && taken;
}

class PosixConsole : public Console {
 public:
  void Out(std::wstring_view text) override { outIsWhole_ = Write(stdout, text) && outIsWhole_; }
  // Nobody can be told that an error text cannot be written.
  void Err(std::wstring_view text) override { static_cast<void>(Write(stderr, text)); }
  bool ErrIsTerminal() const override { return isatty(STDERR_FILENO) != 0; }
  bool IsOutWhole() const override { return outIsWhole_; }

 private:
  bool outIsWhole_ = true;
};

}  // namespace

std::unique_ptr<Console> OpenConsole() {
  // A reader that has gone away must not end a run half way.
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  return std::make_unique<PosixConsole>();
}

}  // namespace carrovan
