#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "registry_text/registry_key.h"

namespace carrovan {

// Goes through a text line by line and through a line piece by piece. Lines end in CR LF or LF.
class RegistryLineReader {
 public:
  explicit RegistryLineReader(std::wstring_view text) : rest_(text) {}

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

  // What must follow a string that goes on over several lines.
  enum class Behind { kEquals, kLineEnd };

  // Takes a quoted string with its escapes; nothing when it does not end or holds an escape that
  // has no meaning. Line ends in it are a part of it. One that does not end on this line ends at
  // the next quote, and only if what must follow it stands there: else the quote begins another
  // string, and the end of this one is missing.
  std::optional<std::wstring> TakeString(Behind behind);

  // Takes a hexadecimal number of at most that many digits.
  std::optional<std::uint32_t> TakeHex(std::size_t mostDigits);

 private:
  // A string's text and how long it is with its quotes.
  struct Quoted {
    std::wstring text;
    std::size_t length = 0;
  };
  static std::optional<Quoted> ReadString(std::wstring_view text);
  bool MoveBehind(std::size_t length, Behind behind);
  void SkipBlanks();

  std::wstring_view rest_;
  std::wstring_view line_;
  std::size_t lineNumber_ = 0;
};

// Registry text files as the system's registry tool writes them ("Windows Registry Editor Version
// 5.00") and those of its forerunner ("REGEDIT4").

struct RegistryValueChange {
  RegistryValue value;  // only the name counts for a removal
  bool remove = false;
};

struct RegistryKeyChange {
  RegistryHive hive = RegistryHive::kCurrentUser;
  std::wstring keyPath;  // relative to the hive; empty for the hive itself
  bool remove = false;   // with everything below it
  std::vector<RegistryValueChange> values;
};

// A line that says nothing that can be done.
struct RegistryFileProblem {
  std::size_t line = 0;  // from 1
  std::wstring text;
};

struct RegistryFile {
  std::vector<RegistryKeyChange> keys;        // in the order of the file
  std::vector<RegistryFileProblem> problems;  // the first hundred
};

// True for the line with which a registry file begins.
bool IsRegistryFileHeader(std::wstring_view line);

// Nothing when the text is not a registry file. A line with a problem is left out and the rest is
// read, as the system's tool does; the values below a key line with a problem are left out too.
std::optional<RegistryFile> ParseRegistryFile(std::wstring_view text);

// The hive that a root name means ("HKEY_CURRENT_USER" or "HKCU", in any case).
std::optional<RegistryHive> HiveOfRoot(std::wstring_view name);

}  // namespace carrovan
