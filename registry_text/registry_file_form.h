#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace carrovan {

// Verifies that a registry file is written as the system's registry tool writes it, and so means to
// the tool what ParseRegistryFile reads in it: UTF-16 behind the mark FF FE, the header, keys, and
// values of them in the forms of an export, each line ended by CR LF. Nothing else passes, whatever
// a tool may make of it; a file whose lines have lost their leading blanks does.
class RegistryFormScan {
 public:
  // The file's bytes in their order.
  void Take(std::string_view part);

  // The first line that is not understood and why, or nothing. Called once, when all bytes were
  // taken.
  std::optional<std::wstring> Finish();

 private:
  enum class State {
    kMark,
    kHeader,
    kLineStart,
    kKey,
    kName,
    kEquals,
    kData,
    kText,
    kWord,       // expects `word_`
    kNumber,     // the digits of a dword
    kHex,        // behind "hex"
    kHexType,    // the digits of a type
    kFirstByte,  // of a list, which may be empty
    kByte,       // the first digit of one that must come
    kByteEnd,    // its second digit
    kBehindByte,
    kNextByte,   // behind a comma: a byte or the end of a line that goes on
    kGoesOn,     // behind the backslash at the end of a line that goes on
    kContinued,  // the next line
    kEnd,        // CR
    kLineFeed,   // LF
  };

  void TakeByte(std::uint8_t byte);
  void TakeUnit(char16_t unit);
  void TakeHeader(char16_t unit);
  void BeginLine(char16_t unit);
  void TakeKey(char16_t unit);
  void EndKey();
  void TakeQuoted(char16_t unit, State behind);
  void BeginData(char16_t unit);
  void TakeWord(char16_t unit);
  void TakeNumber(char16_t unit);
  void BehindHex(char16_t unit);
  void TakeHexType(char16_t unit);
  void TakeListUnit(char16_t unit);
  void EndLine(State next);
  void Expect(std::u16string_view word, State behind);
  void Refuse(std::wstring_view problem);

  State state_ = State::kMark;
  State behind_ = State::kLineStart;  // of a word or a line's end
  std::string mark_;
  std::optional<std::uint8_t> lowByte_;  // of a unit
  std::u16string_view word_;
  std::u16string line_;     // a key's
  std::size_t taken_ = 0;   // units of the header or a name, digits of a number
  bool isEscaped_ = false;  // the unit behind a backslash
  bool insideKey_ = false;
  std::size_t lineNumber_ = 1;
  std::optional<std::wstring> refusal_;
};

}  // namespace carrovan
