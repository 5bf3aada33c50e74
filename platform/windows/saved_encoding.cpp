#include "platform/windows/saved_encoding.h"

#include <windows.h>

#include <mlang.h>

#include "platform/text.h"
#include "platform/windows/com_handles.h"

namespace carrovan {
namespace {

// The compiler's import libraries do not name it.
constexpr IID kMultiLanguage = {
    0x275c23e1, 0x3747, 0x11d0, {0x9f, 0xea, 0x00, 0xaa, 0x00, 0x3f, 0x86, 0x46}};

constexpr UINT kUtf16CodePage = 1200;
constexpr UINT kBigEndianCodePage = 1201;

// 0 when the system does not know the name.
UINT CodePageOf(const std::wstring& encoding) {
  void* object = nullptr;
  if (FAILED(CoCreateInstance(CLSID_CMultiLanguage, nullptr, CLSCTX_INPROC_SERVER, kMultiLanguage,
                              &object))) {
    return 0;
  }
  const ComPointer<IMultiLanguage> languages(static_cast<IMultiLanguage*>(object));
  MIMECSETINFO info = {};
  const Bstr name = NewBstr(encoding);
  if (languages.Get()->GetCharsetInfo(name.Get(), &info) != S_OK) return 0;
  return info.uiInternetEncoding;
}

std::string SixteenBit(const std::u16string& units, bool bigEndian) {
  std::string bytes;
  bytes.reserve(2 * units.size() + 2);
  const auto add = [&](char16_t unit) {
    const char low = static_cast<char>(unit & 0xFF);
    const char high = static_cast<char>(unit >> 8);
    bytes.push_back(bigEndian ? high : low);
    bytes.push_back(bigEndian ? low : high);
  };
  add(0xFEFF);
  for (const char16_t unit : units) add(unit);
  return bytes;
}

std::string CharacterReference(std::wstring_view character) {
  char32_t code = character[0];
  if (character.size() == 2) {
    code = 0x10000 + ((code - 0xD800) << 10) + (static_cast<char32_t>(character[1]) - 0xDC00);
  }
  return "&#" + std::to_string(static_cast<unsigned long>(code)) + ";";
}

// One character, which may be two units.
std::string EncodeCharacter(std::wstring_view character, UINT codePage) {
  char bytes[16] = {};
  BOOL replaced = FALSE;
  const int count = WideCharToMultiByte(codePage, WC_NO_BEST_FIT_CHARS, character.data(),
                                        static_cast<int>(character.size()), bytes, sizeof(bytes),
                                        nullptr, &replaced);
  return count <= 0 || replaced != FALSE ? CharacterReference(character)
                                         : std::string(bytes, static_cast<std::size_t>(count));
}

std::string CodePageText(const std::wstring& text, UINT codePage) {
  std::string bytes;
  bytes.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t units = text[i] >= 0xD800 && text[i] < 0xDC00 && i + 1 < text.size() ? 2 : 1;
    if (text[i] < 0x80) {
      bytes.push_back(static_cast<char>(text[i]));
    } else {
      bytes += EncodeCharacter(std::wstring_view(text).substr(i, units), codePage);
    }
    i += units;
  }
  return bytes;
}

}  // namespace

std::wstring DeclaredEightBitEncoding(const std::string& bytes) {
  const std::string declaration = bytes.substr(0, bytes.find("?>"));
  const std::size_t attribute = declaration.find("encoding=");
  if (!declaration.starts_with("<?xml ") || attribute == std::string::npos) return {};
  const std::size_t first = attribute + sizeof("encoding=");
  const std::size_t last = declaration.find(declaration[first - 1], first);
  const std::wstring name = FromUtf8(declaration.substr(first, last - first));
  return EqualsIgnoringAsciiCase(name, L"UTF-8") ? std::wstring() : name;
}

std::string EncodeDocument(const std::string& utf8, const std::wstring& encoding) {
  const UINT codePage =
      EqualsIgnoringAsciiCase(encoding, L"UTF-16") ? kUtf16CodePage : CodePageOf(encoding);
  if (codePage == 0) return {};
  const std::wstring text = FromUtf8(utf8);
  if (codePage == kUtf16CodePage || codePage == kBigEndianCodePage) {
    return SixteenBit(ToUtf16(text), codePage == kBigEndianCodePage);
  }
  return CodePageText(text, codePage);
}

}  // namespace carrovan
