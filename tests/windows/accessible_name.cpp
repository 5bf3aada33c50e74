#include "tests/windows/accessible_name.h"

#include <oleacc.h>

#include <algorithm>
#include <array>
#include <bit>

#include "platform/windows/com_handles.h"

namespace carrovan {
namespace {

std::wstring ClassOf(HWND window) {
  std::array<wchar_t, 64> name{};
  GetClassNameW(window, name.data(), static_cast<int>(name.size()));
  return name.data();
}

std::wstring TextOf(HWND window) {
  constexpr UINT kLimitMilliseconds = 5000;
  std::array<wchar_t, 1024> text{};
  DWORD_PTR length = 0;
  SendMessageTimeoutW(window, WM_GETTEXT, text.size(), std::bit_cast<LPARAM>(text.data()),
                      SMTO_ABORTIFHUNG, kLimitMilliseconds, &length);
  return text.data();
}

bool IsNamedByItsLabel(const std::wstring& className) {
  constexpr std::array<const wchar_t*, 5> kClasses{L"Edit", L"ComboBox", L"ListBox",
                                                   L"SysTreeView32", L"msctls_progress32"};
  return std::ranges::find(kClasses, className) != kClasses.end();
}

// The static right in front of a control in the order of the Tab key.
std::wstring LabelOf(HWND window) {
  const HWND before = GetWindow(window, GW_HWNDPREV);
  return before != nullptr && ClassOf(before) == L"Static" ? TextOf(before) : L"";
}

std::wstring InterfaceNameOf(HWND window) {
  const ComApartment apartment;
  ComPointer<IAccessible> accessible;
  const HRESULT found =
      AccessibleObjectFromWindow(window, static_cast<DWORD>(OBJID_CLIENT), IID_IAccessible,
                                 reinterpret_cast<void**>(accessible.Receive()));
  if (FAILED(found)) return L"";
  VARIANT self{};
  self.vt = VT_I4;
  self.lVal = CHILDID_SELF;
  Bstr name;
  if (accessible.Get()->get_accName(self, name.Receive()) != S_OK || !name) return L"";
  return {name.Get(), SysStringLen(name.Get())};
}

}  // namespace

std::wstring AccessibleName(HWND window) {
  return IsNamedByItsLabel(ClassOf(window)) ? LabelOf(window) : InterfaceNameOf(window);
}

}  // namespace carrovan
