#include <algorithm>

#include "platform/posix/host_access.h"

namespace carrovan {
namespace {

constexpr wchar_t kBackslashInName = 0xF05C;

}  // namespace

std::filesystem::path HostPathFromText(const std::wstring& text) {
  std::wstring converted = text;
  std::replace(converted.begin(), converted.end(), L'\\', L'/');
  std::replace(converted.begin(), converted.end(), kBackslashInName, L'\\');
  return {ToLosslessUtf8(converted)};
}

std::wstring TextFromHostName(const std::filesystem::path& name) {
  std::wstring text = FromLosslessUtf8(name.native());
  std::replace(text.begin(), text.end(), L'\\', kBackslashInName);
  return text;
}

}  // namespace carrovan
