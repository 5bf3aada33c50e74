#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <memory>

#include "platform/posix/host_access.h"

namespace carrovan {
namespace {

constexpr wchar_t kBackslashInName = 0xF05C;

struct CloseFolder {
  void operator()(DIR* folder) const { closedir(folder); }
};

}  // namespace

HostString HostStringFromText(std::wstring_view text) {
  std::wstring converted(text);
  std::replace(converted.begin(), converted.end(), L'\\', L'/');
  std::replace(converted.begin(), converted.end(), kBackslashInName, L'\\');
  return ToLosslessUtf8(converted);
}

std::wstring TextFromHostName(HostStringView name) {
  std::wstring text = FromLosslessUtf8(name);
  std::replace(text.begin(), text.end(), L'\\', kBackslashInName);
  return text;
}

bool IsThere(const HostString& path) {
  struct stat facts;
  return lstat(path.c_str(), &facts) == 0;
}

void ForEachName(const HostString& folder, const std::function<void(HostStringView name)>& take) {
  const std::unique_ptr<DIR, CloseFolder> opened(opendir(folder.c_str()));
  if (!opened) return;
  while (const dirent* const entry = readdir(opened.get())) {
    const HostStringView name = entry->d_name;
    if (name != "." && name != "..") take(name);
  }
}

}  // namespace carrovan
