#include <windows.h>

#include <algorithm>

#include "platform/console.h"
#include "text/text.h"

namespace carrovan {
namespace {

bool IsTerminal(HANDLE stream) {
  DWORD mode = 0;
  return GetConsoleMode(stream, &mode) != FALSE;
}

bool WriteBytes(HANDLE stream, std::string_view bytes) {
  while (!bytes.empty()) {
    const auto part = static_cast<DWORD>(std::min<std::size_t>(bytes.size(), 1 << 20));
    DWORD written = 0;
    if (WriteFile(stream, bytes.data(), part, &written, nullptr) == FALSE || written == 0) {
      return false;
    }
    bytes.remove_prefix(written);
  }
  return true;
}

// A console takes no more than some ten thousand characters at once.
bool WriteToTerminal(HANDLE stream, std::wstring_view text) {
  while (!text.empty()) {
    auto part = static_cast<DWORD>(std::min<std::size_t>(text.size(), 8192));
    if (part < text.size() && IS_HIGH_SURROGATE(text[part - 1])) --part;
    DWORD written = 0;
    if (WriteConsoleW(stream, text.data(), part, &written, nullptr) == FALSE || written == 0) {
      return false;
    }
    text.remove_prefix(written);
  }
  return true;
}

bool Write(HANDLE stream, std::wstring_view text) {
  return IsTerminal(stream) ? WriteToTerminal(stream, text) : WriteBytes(stream, ToUtf8(text));
}

class WindowsConsole : public Console {
 public:
  void Out(std::wstring_view text) override {
    outIsWhole_ = Write(GetStdHandle(STD_OUTPUT_HANDLE), text) && outIsWhole_;
  }
  // Nowhere is left to report that an error text cannot be written.
  void Err(std::wstring_view text) override {
    static_cast<void>(Write(GetStdHandle(STD_ERROR_HANDLE), text));
  }
  bool ErrIsTerminal() const override { return IsTerminal(GetStdHandle(STD_ERROR_HANDLE)); }
  bool IsOutWhole() const override { return outIsWhole_; }

 private:
  bool outIsWhole_ = true;
};

}  // namespace

std::unique_ptr<Console> OpenConsole() { return std::make_unique<WindowsConsole>(); }

}  // namespace carrovan
