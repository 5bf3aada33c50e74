#include "platform/windows/windows_code_page.h"

#include <windows.h>

#include <mlang.h>
#include <algorithm>
#include <cstdint>
#include <optional>

#include "platform/windows/com_handles.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr char16_t kByteBase = 0xDC00;
constexpr std::size_t kLongestCharacter = 4;

bool StandsForByte(char16_t unit) { return unit >= kByteBase + 0x80 && unit <= kByteBase + 0xFF; }

std::string Narrowed(std::wstring_view text) {
  const auto length = static_cast<int>(text.size());
  const int size =
      WideCharToMultiByte(CP_ACP, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
  std::string bytes(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_ACP, 0, text.data(), length, bytes.data(), size, nullptr, nullptr);
  return bytes;
}

// Nothing when the bytes are no text, or text that turns into other bytes.
std::optional<std::wstring> Widened(std::string_view bytes) {
  const auto length = static_cast<int>(bytes.size());
  const int size =
      MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, bytes.data(), length, nullptr, 0);
  if (size == 0) return std::nullopt;
  std::wstring text(static_cast<std::size_t>(size), L'\0');
  MultiByteToWideChar(CP_ACP, 0, bytes.data(), length, text.data(), size);
  if (Narrowed(text) != bytes) return std::nullopt;
  return text;
}

// Takes the character at the front, or one byte that is none.
std::wstring TakeCharacter(std::string_view& bytes) {
  for (std::size_t length = 1; length <= std::min(bytes.size(), kLongestCharacter); ++length) {
    if (auto character = Widened(bytes.substr(0, length))) {
      bytes.remove_prefix(length);
      return *character;
    }
  }
  const auto byte = static_cast<std::uint8_t>(bytes.front());
  bytes.remove_prefix(1);
  return std::wstring(1, static_cast<wchar_t>(kByteBase + byte));
}

}  // namespace

std::u16string WindowsCodePage::Decode(std::string_view bytes) const {
  if (bytes.empty()) return {};
  if (const auto text = Widened(bytes)) return ToUtf16(*text);
  std::wstring text;
  while (!bytes.empty()) text += TakeCharacter(bytes);
  return ToUtf16(text);
}

std::string WindowsCodePage::Encode(std::u16string_view text) const {
  std::string bytes;
  while (!text.empty()) {
    if (StandsForByte(text.front())) {
      bytes.push_back(static_cast<char>(text.front() - kByteBase));
      text.remove_prefix(1);
      continue;
    }
    // The second half of a pair looks like such a byte.
    std::size_t length = 1;
    while (length < text.size() &&
           (!StandsForByte(text[length]) || (text[length - 1] & 0xFC00) == 0xD800)) {
      ++length;
    }
    bytes += Narrowed(FromUtf16(text.substr(0, length)));
    text.remove_prefix(length);
  }
  return bytes;
}

std::unique_ptr<CodePage> OpenHostCodePage() { return std::make_unique<WindowsCodePage>(); }

namespace {

// The compiler's import libraries do not name it.
constexpr IID kMultiLanguage = {
    0x275c23e1, 0x3747, 0x11d0, {0x9f, 0xea, 0x00, 0xaa, 0x00, 0x3f, 0x86, 0x46}};

// 0 when the system does not know the name.
UINT CodePageOf(const std::string& encoding) {
  void* object = nullptr;
  if (FAILED(CoCreateInstance(CLSID_CMultiLanguage, nullptr, CLSCTX_INPROC_SERVER, kMultiLanguage,
                              &object))) {
    return 0;
  }
  const ComPointer<IMultiLanguage> languages(static_cast<IMultiLanguage*>(object));
  MIMECSETINFO info = {};
  const Bstr name = NewBstr(FromUtf8(encoding));
  if (languages.Get()->GetCharsetInfo(name.Get(), &info) != S_OK) return 0;
  return info.uiInternetEncoding;
}

class CodePageEncoder : public DocumentEncoder {
 public:
  explicit CodePageEncoder(UINT codePage) : codePage_(codePage) {}

  std::size_t Append(std::string_view utf8, std::string& bytes) override {
    std::size_t taken = 0;
    while (taken < utf8.size()) {
      const std::size_t length = Utf8LengthOf(utf8[taken]);
      if (length == 1) {
        bytes.push_back(utf8[taken]);
      } else if (!AppendCharacter(FromUtf8(utf8.substr(taken, length)), bytes)) {
        break;
      }
      taken += length;
    }
    return taken;
  }

  void Finish(std::string&) override {}

 private:
  // A code page may have a likeness in place of a character that it lacks.
  bool AppendCharacter(const std::wstring& character, std::string& bytes) const {
    char narrow[16] = {};
    const int count =
        WideCharToMultiByte(codePage_, 0, character.data(), static_cast<int>(character.size()),
                            narrow, sizeof(narrow), nullptr, nullptr);
    wchar_t wide[4] = {};
    const int units = count <= 0 ? 0 : MultiByteToWideChar(codePage_, 0, narrow, count, wide, 4);
    if (units <= 0 || std::wstring_view(wide, static_cast<std::size_t>(units)) != character) {
      return false;
    }
    bytes.append(narrow, static_cast<std::size_t>(count));
    return true;
  }

  UINT codePage_;
};

}  // namespace

std::unique_ptr<DocumentEncoder> OpenCodePageEncoder(const std::string& encoding) {
  const UINT codePage = CodePageOf(encoding);
  return codePage == 0 ? nullptr : std::make_unique<CodePageEncoder>(codePage);
}

}  // namespace carrovan
