#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/code_page.h"

namespace carrovan {

// How the bytes of a text file stand for text: UTF-16 little-endian behind the mark FF FE, or 8-bit
// text. Whatever is not edited comes back byte for byte.
class TextForm {
 public:
  TextForm(std::string_view fileBytes, const CodePage& codePage);

  // The same for a document, whose 8-bit text is UTF-8 where its bytes allow that.
  static TextForm OfDocument(std::string_view fileBytes, const CodePage& codePage);

  std::size_t UnitBytes() const { return isUtf16_ ? 2 : 1; }
  bool IsUtf16() const { return isUtf16_; }
  bool IsUnicode() const { return isUtf16_ || isUtf8_; }

  // The file's mark, its text, and an odd last byte that is half a unit.
  std::string_view Mark(std::string_view fileBytes) const;
  std::string_view Body(std::string_view fileBytes) const;
  std::string_view Rest(std::string_view fileBytes) const;

  std::u16string Decode(std::string_view body) const;
  // The same into a text whose storage is used again.
  void Decode(std::string_view body, std::u16string& text) const;
  std::string Encode(std::u16string_view text) const;
  void AppendEncoded(std::u16string_view text, std::string& bytes) const;

  // Whether text that comes from elsewhere can be written in this file.
  bool CanHold(std::u16string_view text) const;

 private:
  const CodePage* codePage_;
  bool isUtf16_;
  bool isUtf8_ = false;
};

// The bytes that a text's units lie in.
template <typename Char>
std::string_view BytesOf(std::basic_string_view<Char> text) {
  return {static_cast<const char*>(static_cast<const void*>(text.data())),
          text.size() * sizeof(Char)};
}

// Takes the front of a text off it, about `leastBytes` long and up to the end of a line.
std::string_view TakeWholeLines(std::string_view& body, std::size_t leastBytes,
                                std::size_t unitBytes);

// Behind the last line end at or behind `from`; 0 when there is none.
std::size_t LastLineEnd(std::string_view body, std::size_t from, std::size_t unitBytes);

}  // namespace carrovan
