#include "platform/windows/windows_guid_source.h"

#include <windows.h>

#include <objbase.h>

#include <array>

namespace carrovan {

std::optional<std::wstring> WindowsGuidSource::NewGuid() {
  GUID guid = {};
  if (CoCreateGuid(&guid) != S_OK) return std::nullopt;
  std::array<wchar_t, 39> text = {};
  if (StringFromGUID2(guid, text.data(), static_cast<int>(text.size())) == 0) return std::nullopt;
  return text.data();
}

}  // namespace carrovan
