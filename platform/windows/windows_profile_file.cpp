#include "platform/windows/windows_profile_file.h"

#include <windows.h>

#include <array>

#include "platform/path_text.h"
#include "platform/windows/system_path.h"

namespace carrovan {
namespace {

// Wine's profile functions take no path beyond the fixed buffers, marked or not, so a long folder
// is named by its short alias. Where the disk keeps no aliases the marked path has to do.
std::wstring ProfilePath(const std::wstring& path) {
  if (path.size() <= kLongestPlainPath) return path;
  std::wstring full = SystemPath(path);
  std::array<wchar_t, kFixedPathBuffer> alias = {};
  const DWORD length = GetShortPathNameW(RemoveFileSpec(full).c_str(), alias.data(),
                                         static_cast<DWORD>(alias.size()));
  if (length == 0 || length >= alias.size()) return full;
  return WithTrailingBackslash(alias.data()) + FileNameOf(full);
}

}  // namespace

std::wstring WindowsProfileFile::ReadValue(const std::wstring& section, const std::wstring& key,
                                           const std::wstring& filePath) const {
  std::array<wchar_t, 256> value = {};
  const DWORD length =
      GetPrivateProfileStringW(section.c_str(), key.c_str(), L"", value.data(),
                               static_cast<DWORD>(value.size()), ProfilePath(filePath).c_str());
  return std::wstring(value.data(), length);
}

bool WindowsProfileFile::WriteValue(const std::wstring& section, const std::wstring& key,
                                    const std::wstring& value, const std::wstring& filePath) {
  return WritePrivateProfileStringW(section.c_str(), key.c_str(), value.c_str(),
                                    ProfilePath(filePath).c_str()) != FALSE;
}

}  // namespace carrovan
