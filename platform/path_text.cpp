#include "platform/path_text.h"

#include <algorithm>

namespace carrovan {
namespace {

// Length of "C:\", "\" or "\\server\share", the part that no removal takes away.
std::size_t RootLength(std::wstring_view path) {
  if (path.size() >= 2 && path[1] == L':') return path.size() >= 3 && path[2] == L'\\' ? 3 : 2;
  if (path.substr(0, 2) != L"\\\\") return path.substr(0, 1) == L"\\" ? 1 : 0;
  const std::size_t share = path.find(L'\\', 2);
  if (share == std::wstring_view::npos) return path.size();
  const std::size_t end = path.find(L'\\', share + 1);
  return end == std::wstring_view::npos ? path.size() : end;
}

}  // namespace

bool EndsInSeparator(std::wstring_view path) {
  return !path.empty() && (path.back() == L'\\' || path.back() == L'/');
}

std::wstring WithTrailingBackslash(std::wstring path) {
  if (!EndsInSeparator(path)) path.push_back(L'\\');
  return path;
}

std::wstring WithoutTrailingBackslashes(std::wstring path) {
  while (path.ends_with(L'\\')) path.pop_back();
  return path;
}

std::wstring TidyPath(std::wstring_view path) {
  std::wstring tidy;
  for (const wchar_t c : path) {
    const bool separator = c == L'\\' || c == L'/';
    if (separator && tidy.size() > 1 && tidy.back() == L'\\') continue;
    tidy.push_back(separator ? L'\\' : c);
  }
  return WithoutTrailingBackslashes(std::move(tidy));
}

std::wstring RemoveFileSpec(std::wstring path) {
  const std::size_t root = RootLength(path);
  if (path.size() <= root) return path;
  const std::size_t separator = path.rfind(L'\\');
  if (separator == std::wstring::npos || separator < root) {
    path.resize(root);
  } else {
    path.resize(separator);
  }
  return path;
}

std::wstring FileNameOf(std::wstring_view path) {
  const std::size_t separator = path.find_last_of(L"\\/");
  return std::wstring(separator == std::wstring_view::npos ? path : path.substr(separator + 1));
}

bool IsGuid(std::wstring_view name) {
  constexpr std::wstring_view kForm = L"00000000-0000-0000-0000-000000000000";
  return std::ranges::equal(name, kForm, [](wchar_t c, wchar_t form) {
    if (form == L'-') return c == L'-';
    return (c >= L'0' && c <= L'9') || (c >= L'a' && c <= L'f') || (c >= L'A' && c <= L'F');
  });
}

}  // namespace carrovan
