#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "platform/file_system.h"

namespace carrovan {

// Makes 16-bit units of a registry file's bytes: UTF-16 behind the mark FF FE, which is no unit, or
// 8-bit text, whose bytes are units.
class RegistryFileUnits {
 public:
  // The file's bytes in their order; `take` gets each unit.
  template <typename TakeUnit>
  void Take(std::string_view part, TakeUnit take) {
    for (const char byte : part) {
      if (encodingKnown_) {
        TakeByte(byte, take);
      } else {
        mark_.push_back(byte);
        if (mark_.size() == 2) LearnEncoding(take);
      }
    }
  }

  // Gives what was too short to show the encoding. Called once, when all bytes were taken.
  template <typename TakeUnit>
  void Finish(TakeUnit take) {
    if (!encodingKnown_) LearnEncoding(take);
  }

  bool IsUtf16() const { return isUtf16_; }

  // The bytes end within a unit.
  bool IsCutShort() const { return firstHalf_.has_value(); }

 private:
  template <typename TakeUnit>
  void LearnEncoding(TakeUnit take) {
    encodingKnown_ = true;
    isUtf16_ = mark_ == "\xFF\xFE";
    if (isUtf16_) return;
    for (const char early : mark_) TakeByte(early, take);
  }

  template <typename TakeUnit>
  void TakeByte(char byte, TakeUnit& take) {
    const auto value = static_cast<unsigned char>(byte);
    if (!isUtf16_) return take(static_cast<char16_t>(value));
    if (!firstHalf_) {
      firstHalf_ = value;
      return;
    }
    const auto unit = static_cast<char16_t>(*firstHalf_ | value << 8);
    firstHalf_.reset();
    take(unit);
  }

  std::string mark_;  // the first bytes, until they show the encoding
  bool encodingKnown_ = false;
  bool isUtf16_ = false;
  std::optional<unsigned char> firstHalf_;
};

// Looks through a registry file for keys that a settings package has no business with. It does not
// follow the rules of one registry tool, since tools differ in what they overlook: every line that
// any of them could take for a key must name an allowed key in plain spelling.
class RegistryFileScan {
 public:
  // Allowed are HKEY_CURRENT_USER\SOFTWARE\company and the keys below it.
  explicit RegistryFileScan(std::wstring company);

  // The file's bytes in their order: UTF-16 behind the mark FF FE, or 8-bit text.
  void Take(std::string_view part);

  // Why the file is not to be imported, naming the first line that is wrong; nothing when there is
  // none. Called once, when all bytes were taken.
  std::optional<std::wstring> Finish();

 private:
  enum class Line {
    kBlank,   // nothing but blanks so far
    kPassed,  // a value or a comment: no tool reads a key out of it
    kKept,    // anything else, kept to be judged when it ends
  };

  // Tools that do not end a line where it ends oddly would take a longer key from it.
  enum class LineEnd { kPlain, kOdd };

  void TakeUnit(char16_t unit);
  void EndLine(LineEnd end);
  void Judge(std::wstring_view line, LineEnd end);
  void Refuse(std::wstring_view problem);
  std::wstring KeptText() const;

  const std::wstring company_;
  RegistryFileUnits units_;
  Line line_ = Line::kBlank;
  bool behindReturn_ = false;
  std::u16string kept_;
  std::size_t lineNumber_ = 1;
  std::optional<std::wstring> refusal_;
};

// Verifies that a registry file is whole. A disk that fills up cuts one short, and the registry
// tool takes what is left of it without a word. A file that ends between two lines looks like
// one that was meant so.
class RegistryFileCheck {
 public:
  // The file's bytes in their order: UTF-16 behind the mark FF FE, or 8-bit text.
  void Take(std::string_view part);

  // What is missing ("ends inside a value"), as it reads behind the file's name and a colon;
  // nothing for a whole file. Called once, when all bytes were taken.
  std::optional<std::wstring> Finish();

  // Whether the first line is that of a registry file. Called when all bytes were taken.
  bool HasHeader() const;

 private:
  // Where in a line, or in a value that goes on over several, the text is.
  enum class Place {
    kLineStart,
    kLine,  // a key, a comment, or what is no value
    kName,  // quoted; line ends may be a part of it
    kBehindName,
    kValue,  // unquoted, such as hexadecimal numbers
    kText,   // quoted; line ends may be a part of it
    kBehindText,
    kContinued,  // at the start of a line that goes on with numbers
  };

  void TakeUnit(char16_t unit);
  void TakeQuoted(char16_t unit, Place behind);
  void TakeValueUnit(char16_t unit);
  void TakeLineStart(char16_t unit);

  std::size_t bytes_ = 0;
  RegistryFileUnits units_;
  std::u16string header_;  // the first line, as far as it is needed
  bool inHeader_ = true;
  Place place_ = Place::kLineStart;
  char16_t lastUnit_ = u'\0';
  bool escaped_ = false;      // the next character of a quoted text means itself
  char16_t lastInk_ = u'\0';  // of an unquoted value, on its line
};

// The same for a file on the disk; a file that cannot be read is not whole.
std::optional<std::wstring> WhatRegistryFileLacks(const FileReader& files,
                                                  const std::wstring& path);

}  // namespace carrovan
