#include "text/path_text.h"

#include <algorithm>
#include <array>

#include "text/text.h"

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

namespace {

bool IsSeparator(wchar_t c) { return c == L'\\' || c == L'/'; }

// The system takes superscript one, two and three for the digits of a port.
bool IsPortDigit(wchar_t c) {
  return (c >= L'0' && c <= L'9') || c == 0xB9 || c == 0xB2 || c == 0xB3;
}

// A device answers to its name with any extension, and with blanks in front of the dot.
bool IsDeviceName(std::wstring_view component) {
  std::wstring_view base = component.substr(0, component.find(L'.'));
  while (!base.empty() && base.back() == L' ') base.remove_suffix(1);
  constexpr std::array<std::wstring_view, 6> kDevices = {L"CON", L"PRN",    L"AUX",
                                                         L"NUL", L"CONIN$", L"CONOUT$"};
  const auto isBase = [&](std::wstring_view device) {
    return EqualsIgnoringAsciiCase(base, device);
  };
  if (std::any_of(kDevices.begin(), kDevices.end(), isBase)) return true;
  if (base.size() != 4 || !IsPortDigit(base[3])) return false;
  const std::wstring_view port = base.substr(0, 3);
  return EqualsIgnoringAsciiCase(port, L"COM") || EqualsIgnoringAsciiCase(port, L"LPT");
}

std::optional<std::wstring> RefusalOfComponent(std::wstring_view component) {
  if (component.empty()) return L"has an empty folder name";
  if (component == L"..") return L"leads out of the folder";
  // The system drops these endings, so "..  " would become "..".
  if (component.back() == L'.' || component.back() == L' ') return L"ends in a dot or a blank";
  if (IsDeviceName(component)) return L"names a device";
  return std::nullopt;
}

}  // namespace

std::optional<std::wstring> RefusalOfStoredName(std::wstring_view name) {
  if (name.empty()) return L"is empty";
  if (IsSeparator(name.front())) return L"is an absolute path";
  if (name.find(L':') != std::wstring_view::npos) return L"holds a colon";
  const auto isControl = [](wchar_t c) { return static_cast<char32_t>(c) < 32; };
  if (std::any_of(name.begin(), name.end(), isControl)) return L"holds a control character";
  while (!name.empty()) {
    const auto end = std::find_if(name.begin(), name.end(), IsSeparator);
    const auto length = static_cast<std::size_t>(end - name.begin());
    if (auto refusal = RefusalOfComponent(name.substr(0, length))) return refusal;
    name.remove_prefix(std::min(length + 1, name.size()));
  }
  return std::nullopt;
}

}  // namespace carrovan
