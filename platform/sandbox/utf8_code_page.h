#pragma once

#include "platform/code_page.h"

namespace carrovan {

class Utf8CodePage : public CodePage {
 public:
  std::u16string Decode(std::string_view bytes) const override;
  std::string Encode(std::u16string_view text) const override;
};

}  // namespace carrovan
