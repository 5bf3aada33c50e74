#pragma once

#include <string>
#include <string_view>

#include "platform/code_page.h"
#include "platform/file_system.h"

namespace carrovan {

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
