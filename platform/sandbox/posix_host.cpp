#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

#include "platform/sandbox/utf8_code_page.h"
#include "platform/text.h"
#include "platform/user_identity.h"

namespace carrovan {
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

std::unique_ptr<CodePage> OpenHostCodePage() { return std::make_unique<Utf8CodePage>(); }

}  // namespace carrovan
