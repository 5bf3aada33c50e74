#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file_system.h"
#include "platform/system_facts.h"

namespace carrovan {

// Search and replacement on 16-bit units, made for long texts in which matches are rare. Case
// counts.

inline constexpr std::size_t kNotFound = std::u16string_view::npos;

// The first occurrence at or behind `from`; kNotFound also for an empty search text.
std::size_t FindUnits(std::u16string_view text, std::u16string_view search, std::size_t from = 0);

// Replaces every occurrence, found from left to right without overlap, and gives their number. The
// text is not touched when there is none. An empty search text replaces nothing.
std::size_t ReplaceUnits(std::u16string& text, std::u16string_view search,
                         std::u16string_view replacement);

// Replaces in what stands between texts that stay as they are. `replace` gets each stretch, changes
// it and gives the number of replacements. Without such texts it gets the whole.
template <typename Replace>
std::size_t ReplaceBetween(std::u16string& text, const std::vector<std::u16string>& stay,
                           Replace replace) {
  if (stay.empty()) return replace(text);
  std::u16string result;
  std::size_t count = 0;
  for (std::size_t from = 0; from <= text.size();) {
    std::size_t at = text.size();
    std::size_t length = 0;
    for (const std::u16string& each : stay) {
      const std::size_t hit = std::min(FindUnits(text, each, from), text.size());
      if (hit > at || (hit == at && each.size() <= length)) continue;
      at = hit;
      length = hit == text.size() ? 0 : each.size();
    }
    std::u16string stretch = text.substr(from, at - from);
    count += replace(stretch);
    result.append(stretch).append(text, at, length);
    from = at == text.size() ? at + 1 : at + length;
  }
  if (count > 0) text.swap(result);
  return count;
}

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

// The text of a document's bytes. kInvalidData for one in another encoding, which would not
// survive. `holdsAnyCharacter` becomes whether the document's encoding has every character.
[[nodiscard]] SystemCode DecodeDocument(std::string_view bytes, const CodePage& codePage,
                                        std::u16string& text, bool& holdsAnyCharacter);

// An XML document as text. Its 8-bit text is UTF-8 where its bytes allow that, else text in the
// machine's code page.
class DocumentText {
 public:
  DocumentText(FileSystem& files, const CodePage& codePage) : files_(files), codePage_(codePage) {}

  // Reads a document. kInvalidData for one in another encoding, which would not survive.
  [[nodiscard]] SystemCode Load(const std::wstring& file);

  const std::u16string& Text() const { return text_; }

  // Whether the document's encoding has every character.
  bool HoldsAnyCharacter() const { return holdsAnyCharacter_; }

  // Puts the text into the file in one step, unless its bytes are the same. What a broken run left
  // under the file's name with ".tmp" goes away; when it cannot, nothing is written.
  [[nodiscard]] SystemCode Save(std::u16string_view text);

 private:
  FileSystem& files_;
  const CodePage& codePage_;
  std::wstring file_;
  std::string bytes_;
  std::u16string text_;
  bool holdsAnyCharacter_ = false;
};

// Takes a line off the front of a text, without its line end, which is LF or CR LF.
std::u16string_view TakeLine(std::u16string_view& text);

}  // namespace carrovan
