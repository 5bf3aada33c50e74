#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "package/registry_file_units.h"
#include "platform/file_system.h"

namespace carrovan {

// Tells whether a registry file is whole. A disk that fills up cuts one short, and the registry
// tool takes what is left of it without a word. A file that ends between two lines cannot be told
// from one that was meant so.
class RegistryFileCheck {
 public:
  // The file's bytes in their order: UTF-16 behind the mark FF FE, or 8-bit text.
  void Take(std::string_view part);

  // What is missing ("ends inside a value"), as it reads behind the file's name and a colon;
  // nothing for a whole file. Called once, when all bytes were taken.
  std::optional<std::wstring> Finish();

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
