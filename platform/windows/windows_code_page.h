#pragma once

#include "platform/code_page.h"

namespace carrovan {

// The code page that the system is set to.
class WindowsCodePage : public CodePage {
 public:
  std::u16string Decode(std::string_view bytes) const override;
  std::string Encode(std::u16string_view text) const override;
};

}  // namespace carrovan
