#include "platform/windows/dialog.h"

#include <bit>
#include <cstring>
#include <exception>

#include "text/text.h"

namespace carrovan {
namespace {

int DotsPerInchOfScreen() {
  const HDC screen = GetDC(nullptr);
  const int dots = GetDeviceCaps(screen, LOGPIXELSY);
  ReleaseDC(nullptr, screen);
  return dots;
}

}  // namespace

int DotsPerInch(HWND window) {
  // Systems before Windows 10 have one scale for everything, and not this function.
  using GetDpiForWindowFunction = UINT(WINAPI*)(HWND);
  const auto getDpiForWindow = reinterpret_cast<GetDpiForWindowFunction>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32.dll"), "GetDpiForWindow")));
  const int dots = getDpiForWindow != nullptr ? static_cast<int>(getDpiForWindow(window)) : 0;
  return dots > 0 ? dots : DotsPerInchOfScreen();
}

int ScaledPixels(HWND window, int pixels) { return MulDiv(pixels, DotsPerInch(window), 96); }

bool IsHighContrastOn() {
  HIGHCONTRASTW contrast{};
  contrast.cbSize = sizeof(contrast);
  return SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof(contrast), &contrast, 0) != FALSE &&
         (contrast.dwFlags & HCF_HIGHCONTRASTON) != 0;
}

bool CopyText(HWND owner, const std::wstring& text) {
  if (OpenClipboard(owner) == FALSE) return false;
  EmptyClipboard();
  const std::size_t bytes = (text.size() + 1) * sizeof(wchar_t);
  const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, bytes);
  if (void* place = memory == nullptr ? nullptr : GlobalLock(memory)) {
    std::memcpy(place, text.c_str(), bytes);
    GlobalUnlock(memory);
  }
  // From here on the memory is the clipboard's.
  const bool copied = memory != nullptr && SetClipboardData(CF_UNICODETEXT, memory) != nullptr;
  CloseClipboard();
  if (memory != nullptr && !copied) GlobalFree(memory);
  return copied;
}

void ShowPlainMessageBox(HWND owner, const std::wstring& text) {
  MessageBoxW(owner, text.c_str(), L"", MB_OK);
}

void ShowApplicationMessageBox(HWND owner, const std::wstring& text) {
  MessageBoxW(owner, text.c_str(), L"Carrovan", MB_OK | MB_ICONWARNING);
}

bool AskInMessageBox(HWND owner, const std::wstring& question) {
  return MessageBoxW(owner, question.c_str(), L"Carrovan", MB_YESNO | MB_ICONQUESTION) == IDYES;
}

bool Dialog::RunModal(const ResourceModule& resources, int templateNumber, HWND owner) {
  return DialogBoxParamW(resources.DialogOwner(templateNumber), MAKEINTRESOURCEW(templateNumber),
                         owner, &Dialog::Procedure, reinterpret_cast<LPARAM>(this)) > 0;
}

bool Dialog::CreatePage(const ResourceModule& resources, int templateNumber, HWND parent) {
  return CreateDialogParamW(resources.DialogOwner(templateNumber), MAKEINTRESOURCEW(templateNumber),
                            parent, &Dialog::Procedure, reinterpret_cast<LPARAM>(this)) != nullptr;
}

void Dialog::SetText(int control, const std::wstring& text) const {
  SetDlgItemTextW(window_, control, text.c_str());
}

std::wstring Dialog::TextOf(int control) const {
  const HWND window = Control(control);
  std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
  const int length = GetWindowTextW(window, text.data(), static_cast<int>(text.size()));
  text.resize(static_cast<std::size_t>(length));
  return text;
}

bool Dialog::OnCommand(int, int) { return false; }

bool Dialog::OnNotify(const NMHDR&) { return false; }

bool Dialog::OnListKey(int) { return false; }

HBRUSH Dialog::OnControlColor(HDC, HWND) { return nullptr; }

std::optional<LRESULT> Dialog::OnMessage(UINT, WPARAM, LPARAM) { return std::nullopt; }

INT_PTR CALLBACK Dialog::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_INITDIALOG) {
    SetWindowLongPtrW(window, DWLP_USER, lParam);
    std::bit_cast<Dialog*>(lParam)->window_ = window;
  }
  auto* dialog = std::bit_cast<Dialog*>(GetWindowLongPtrW(window, DWLP_USER));
  if (dialog == nullptr) return FALSE;
  if (message == WM_NCDESTROY) {
    dialog->window_ = nullptr;
    return FALSE;
  }
  // Nothing thrown may pass through the system's own code.
  try {
    return dialog->Handle(message, wParam, lParam);
  } catch (const std::exception& problem) {
    ShowApplicationMessageBox(window,
                              L"Something unexpected happened: " + FromUtf8(problem.what()));
    return TRUE;
  }
}

INT_PTR Dialog::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_INITDIALOG:
      return OnInitDialog() ? TRUE : FALSE;
    case WM_COMMAND:
      return HandleCommand(wParam, lParam) ? TRUE : FALSE;
    case WM_NOTIFY:
      if (!OnNotify(*std::bit_cast<const NMHDR*>(lParam))) return FALSE;
      SetWindowLongPtrW(window_, DWLP_MSGRESULT, 0);
      return TRUE;
    case WM_VKEYTOITEM: {
      constexpr INT_PTR kHandled = -2;
      constexpr INT_PTR kLeftToTheList = -1;
      return OnListKey(LOWORD(wParam)) ? kHandled : kLeftToTheList;
    }
    case WM_CTLCOLORBTN:
    case WM_CTLCOLOREDIT:
    case WM_CTLCOLORLISTBOX:
    case WM_CTLCOLORSTATIC:
      return reinterpret_cast<INT_PTR>(
          OnControlColor(std::bit_cast<HDC>(wParam), std::bit_cast<HWND>(lParam)));
    default:
      return HandleOther(message, wParam, lParam);
  }
}

bool Dialog::HandleCommand(WPARAM wParam, LPARAM lParam) {
  // The Enter key on a page's button comes to the outermost dialog; numbers of controls are unique
  // within one dialog only. Elsewhere the key presses this dialog's own default button, for which
  // some systems name the first control of that number, be it a page's.
  const HWND control = std::bit_cast<HWND>(lParam);
  const HWND parent = control != nullptr ? GetParent(control) : window_;
  const bool isOfPage = parent != window_ && IsChild(window_, parent) != FALSE;
  if (isOfPage && (SendMessageW(control, WM_GETDLGCODE, 0, 0) & DLGC_DEFPUSHBUTTON) != 0) {
    SendMessageW(parent, WM_COMMAND, wParam, lParam);
    return true;
  }
  return OnCommand(LOWORD(wParam), HIWORD(wParam));
}

INT_PTR Dialog::HandleOther(UINT message, WPARAM wParam, LPARAM lParam) {
  const std::optional<LRESULT> result = OnMessage(message, wParam, lParam);
  if (!result) return FALSE;
  SetWindowLongPtrW(window_, DWLP_MSGRESULT, *result);
  return TRUE;
}

}  // namespace carrovan
