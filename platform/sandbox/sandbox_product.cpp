#include "platform/sandbox/sandbox_product.h"

#include "platform/profile_text.h"

namespace carrovan {

std::wstring SandboxProduct::Fact(std::wstring_view key) const {
  return ProfileValue(iniText_, L"Product", key);
}

}  // namespace carrovan
