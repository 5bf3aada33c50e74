#include "environment/running_product.h"

#include <algorithm>

#include "platform/text.h"

namespace carrovan {
namespace {

constexpr wchar_t kProductExecutable[] = L"VANTRIC.exe";

}  // namespace

bool IsProductRunning(const ProcessList& processes) {
  return std::ranges::any_of(processes.ExecutableNames(), [](const std::wstring& name) {
    return EqualsIgnoringAsciiCase(name, kProductExecutable);
  });
}

}  // namespace carrovan
