#include <pwd.h>
#include <unistd.h>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "platform/console.h"
#include "platform/machine.h"
#include "platform/posix/host_facts.h"
#include "platform/system_facts.h"
#include "text/text.h"

namespace carrovan {

MachineOrReason OpenNativeMachine() {
  return {nullptr, L"this needs Windows, or --root with a sandbox folder"};
}

namespace {

bool Write(std::FILE* stream, std::wstring_view text) {
  const std::string utf8 = ToUtf8(text);
  const bool taken = std::fwrite(utf8.data(), 1, utf8.size(), stream) == utf8.size();
  return std::fflush(stream) == 0 && taken;
}

class PosixConsole : public Console {
 public:
  void Out(std::wstring_view text) override { outIsWhole_ = Write(stdout, text) && outIsWhole_; }
  // Nowhere is left to report that an error text cannot be written.
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

namespace {

class PosixUser : public UserIdentity {
 public:
  std::optional<std::wstring> UserName() const override {
    std::array<char, 4096> buffer = {};
    passwd account = {};
    passwd* found = nullptr;
    if (getpwuid_r(geteuid(), &account, buffer.data(), buffer.size(), &found) != 0 ||
        found == nullptr) {
      return std::nullopt;
    }
    return FromUtf8(account.pw_name);
  }

  std::optional<std::wstring> ProfileFolder() const override {
    const char* const folder = std::getenv("USERPROFILE");
    if (folder == nullptr) return std::nullopt;
    return FromUtf8(folder);
  }
};

}  // namespace

std::unique_ptr<UserIdentity> OpenHostUser() { return std::make_unique<PosixUser>(); }

namespace {

class PosixProcess : public OwnProcess {
 public:
  ProcessFacts Facts() const override {
    return {FromUtf8(program_invocation_short_name), static_cast<std::uint32_t>(getpid())};
  }
};

}  // namespace

std::unique_ptr<OwnProcess> OpenHostProcess() { return std::make_unique<PosixProcess>(); }

std::unique_ptr<CodePage> OpenHostCodePage() { return std::make_unique<Utf8CodePage>(); }

}  // namespace carrovan
