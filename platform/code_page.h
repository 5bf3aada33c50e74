#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace carrovan {

// The code page of a machine: what the bytes of an 8-bit text mean there. Every byte below 0x80 is
// the ASCII character.
class CodePage {
 public:
  virtual ~CodePage() = default;

  // A byte that is no text in this code page becomes the unpaired surrogate U+DC80 to U+DCFF.
  virtual std::u16string Decode(std::string_view bytes) const = 0;

  // Decoded text gives the same bytes again. A character that the code page lacks becomes a
  // substitute.
  virtual std::string Encode(std::u16string_view text) const = 0;
};

// The code page of the system that this program runs on.
std::unique_ptr<CodePage> OpenHostCodePage();

}  // namespace carrovan
