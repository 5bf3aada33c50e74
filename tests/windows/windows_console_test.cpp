#include <fcntl.h>
#include <gtest/gtest.h>
#include <io.h>

#include <cstdio>

#include "platform/console.h"
#include "tests/support/test_machine.h"

namespace carrovan {
namespace {

// Sends one of the program's standard streams into a file as long as it lives.
class Redirection {
 public:
  Redirection(int stream, const std::wstring& path) : stream_(stream) {
    std::fflush(nullptr);
    saved_ = _dup(stream);
    const int file = _wopen(path.c_str(), _O_CREAT | _O_TRUNC | _O_WRONLY | _O_BINARY, 0600);
    _dup2(file, stream);
    _close(file);
  }
  Redirection(const Redirection&) = delete;
  Redirection& operator=(const Redirection&) = delete;
  ~Redirection() {
    _dup2(saved_, stream_);
    _close(saved_);
  }

 private:
  int stream_;
  int saved_ = -1;
};

constexpr int kStandardOutput = 1;
constexpr int kStandardError = 2;

// Chinese characters, a character outside the BMP, an unpaired surrogate and a line end.
const std::wstring kText = std::wstring(L"\x8BBE\x7F6E \xD83D\xDE00") + L'\xD800' + L"\n";
constexpr char kTextUtf8[] = "\xE8\xAE\xBE\xE7\xBD\xAE \xF0\x9F\x98\x80\xEF\xBF\xBD\n";

TEST(WindowsConsole, WritesUtf8ToAFile) {
  const auto machine = NewTestMachine();
  const std::wstring path = machine->ScratchFolder() + L"out.txt";
  {
    const Redirection redirection(kStandardOutput, path);
    OpenConsole()->Out(kText);
  }
  EXPECT_EQ(machine->FileBytes(path), kTextUtf8);
}

TEST(WindowsConsole, WritesErrorsToTheirOwnStream) {
  const auto machine = NewTestMachine();
  const std::wstring path = machine->ScratchFolder() + L"err.txt";
  {
    const Redirection redirection(kStandardError, path);
    const auto console = OpenConsole();
    console->Err(kText);
    EXPECT_FALSE(console->ErrIsTerminal());
  }
  EXPECT_EQ(machine->FileBytes(path), kTextUtf8);
}

TEST(WindowsConsole, WritesLongTextWhole) {
  const auto machine = NewTestMachine();
  const std::wstring path = machine->ScratchFolder() + L"out.txt";
  constexpr std::size_t kLength = 3'000'000;
  {
    const Redirection redirection(kStandardOutput, path);
    OpenConsole()->Out(std::wstring(kLength, L'x'));
  }
  EXPECT_EQ(machine->FileBytes(path), std::string(kLength, 'x'));
}

}  // namespace
}  // namespace carrovan
