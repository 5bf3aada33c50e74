#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "package/registry_file_units.h"

namespace carrovan {

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

}  // namespace carrovan
