#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "registry_text/registry_data.h"

namespace carrovan {

// A quoted string of a registry file, in the text that it was read from.
class QuotedString {
 public:
  // Of a text that begins with it; nothing when it does not end or holds an escape that has no
  // meaning. Line ends in it are a part of it.
  static std::optional<QuotedString> AtFront(std::u16string_view text);

  // With its quotes.
  std::size_t Length() const { return content_.size() + 2; }

  std::wstring Text() const;

  // As a value's data, with the terminating zero.
  RegistryData::Bytes Data() const;

 private:
  explicit QuotedString(std::u16string_view content) : content_(content) {}

  template <typename Take>
  void ForEachUnit(Take take) const;

  std::u16string_view content_;
};

// Goes through a text line by line and through a line piece by piece. Lines end in CR LF or LF.
class RegistryLineReader {
 public:
  explicit RegistryLineReader(std::u16string_view text) : rest_(text) {}

  // Moves to the next line, past its leading blanks. False at the end of the text.
  bool NextLine();
  std::size_t LineNumber() const { return lineNumber_; }

  // What is left of the line.
  std::u16string_view Line() const { return line_; }

  // True when the line holds nothing more but a comment.
  bool AtEnd() const { return line_.empty() || line_.front() == u';'; }

  // The first character of the next line that is no blank; zero when there is none.
  char16_t PeekNextLine() const;

  // Takes a text, and the blanks behind it, off the line. False when something else is there.
  bool Take(std::u16string_view expected);

  // What must follow a string that goes on over several lines.
  enum class Behind { kEquals, kLineEnd };

  // Takes a quoted string. One that does not end on this line ends at the next quote, and only if
  // what must follow it stands there: else the quote begins another string, and the end of this one
  // is missing.
  std::optional<QuotedString> TakeString(Behind behind);

  // Takes a hexadecimal number of at most that many digits.
  std::optional<std::uint32_t> TakeHex(std::size_t mostDigits);

 private:
  bool MoveBehind(std::size_t length, Behind behind);
  void SkipBlanks();

  std::u16string_view rest_;
  std::u16string_view line_;
  std::size_t lineNumber_ = 0;
};

}  // namespace carrovan
