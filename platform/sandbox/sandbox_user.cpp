#include "platform/sandbox/sandbox_user.h"

#include "platform/path_text.h"
#include "platform/text.h"

namespace carrovan {
namespace {

constexpr std::size_t kUserNameBuffer = 256;

}  // namespace

std::optional<std::wstring> SandboxUser::UserName() const {
  if (name_.empty() || ToUtf16(name_).size() >= kUserNameBuffer) return std::nullopt;
  return name_;
}

std::optional<std::wstring> SandboxUser::ProfileFolder() const {
  std::wstring folder = L"C:\\Users\\" + name_;
  if (ToUtf16(folder).size() >= kFixedPathBuffer) return std::nullopt;
  return folder;
}

}  // namespace carrovan
