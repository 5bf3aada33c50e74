#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace carrovan {

// Goes through a text line by line and through a line piece by piece. Lines end in CR LF or LF.
class RegLineReader {
 public:
  explicit RegLineReader(std::wstring_view text) : rest_(text) {}

  // Moves to the next line, past its leading blanks. False at the end of the text.
  bool NextLine();
  std::size_t LineNumber() const { return lineNumber_; }

  // What is left of the line.
  std::wstring_view Line() const { return line_; }

  // True when the line holds nothing more but a comment.
  bool AtEnd() const { return line_.empty() || line_.front() == L';'; }

  // The first character of the next line that is no blank; zero when there is none.
  wchar_t PeekNextLine() const;

  // Takes a text, and the blanks behind it, off the line. False when something else is there.
  bool Take(std::wstring_view expected);

  // Takes a quoted string with its escapes; nothing when it does not end on this line or holds an
  // escape that has no meaning.
  std::optional<std::wstring> TakeString();

  // Takes a hexadecimal number of at most that many digits.
  std::optional<std::uint32_t> TakeHex(std::size_t mostDigits);

 private:
  void SkipBlanks();

  std::wstring_view rest_;
  std::wstring_view line_;
  std::size_t lineNumber_ = 0;
};

}  // namespace carrovan
