#include "platform/windows/code_page_encoder.h"

#include <windows.h>

#include <mlang.h>

#include <algorithm>

#include "platform/text.h"
#include "platform/windows/com_handles.h"

namespace carrovan {
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
