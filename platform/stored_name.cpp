#include "platform/stored_name.h"

#include <algorithm>
#include <array>

#include "platform/text.h"

namespace carrovan {
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
