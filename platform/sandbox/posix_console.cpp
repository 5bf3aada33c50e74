#include <unistd.h>

#include <csignal>
#include <cstdio>

#include "platform/console.h"
#include "platform/text.h"

namespace carrovan {
namespace {

// Nobody can be told that a text cannot be written, so a failure stays without a word.
void Write(std::FILE* stream, std::wstring_view text) {
  const std::string utf8 = ToUtf8(text);
  std::fwrite(utf8.data(), 1, utf8.size(), stream);
  std::fflush(stream);
}

class PosixConsole : public Console {
 public:
  void Out(std::wstring_view text) override { Write(stdout, text); }
  void Err(std::wstring_view text) override { Write(stderr, text); }
  bool ErrIsTerminal() const override { return isatty(STDERR_FILENO) != 0; }
};

}  // namespace

std::unique_ptr<Console> OpenConsole() {
  // A reader that has gone away must not end a run half way.
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  return std::make_unique<PosixConsole>();
}

}  // namespace carrovan
