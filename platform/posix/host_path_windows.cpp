#include "platform/posix/host_access.h"

namespace carrovan {

HostString HostStringFromText(std::wstring_view text) { return HostString(text); }

std::wstring TextFromHostName(HostStringView name) { return std::wstring(name); }

bool IsThere(const HostString& path) {
  std::error_code error;
  return std::filesystem::exists(std::filesystem::symlink_status(path, error));
}

void ForEachName(const HostString& folder, const std::function<void(HostStringView name)>& take) {
  std::error_code error;
  for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    take(entry->path().filename().native());
  }
}

}  // namespace carrovan
