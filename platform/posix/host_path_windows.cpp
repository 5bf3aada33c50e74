#include "platform/posix/host_access.h"

namespace carrovan {

std::filesystem::path HostPathFromText(const std::wstring& text) { return {text}; }

std::wstring TextFromHostName(const std::filesystem::path& name) { return name.native(); }

}  // namespace carrovan
