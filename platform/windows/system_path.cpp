#include "platform/windows/system_path.h"

#include <windows.h>

namespace carrovan {
namespace {

bool IsMarked(const std::wstring& path) {
  return path.starts_with(L"\\\\?\\") || path.starts_with(L"\\\\.\\");
}

// The marked form is passed on to the disk as it is, so separators and dots are resolved first.
std::wstring FullPath(const std::wstring& path) {
  const DWORD capacity = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
  std::wstring full(capacity, L'\0');
  const DWORD length = GetFullPathNameW(path.c_str(), capacity, full.data(), nullptr);
  if (length == 0 || length >= capacity) return path;
  full.resize(length);
  return full;
}

}  // namespace

std::wstring SystemPath(const std::wstring& path) {
  if (path.size() <= kLongestPlainPath || IsMarked(path)) return path;
  std::wstring full = FullPath(path);
  if (IsMarked(full)) return full;
  if (full.starts_with(L"\\\\")) return L"\\\\?\\UNC" + full.substr(1);
  return L"\\\\?\\" + full;
}

}  // namespace carrovan
