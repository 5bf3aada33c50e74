#include "platform/sandbox/utf8_code_page.h"

#include "platform/sandbox/lossless_utf8.h"
#include "platform/text.h"

namespace carrovan {

std::u16string Utf8CodePage::Decode(std::string_view bytes) const {
  return ToUtf16(FromLosslessUtf8(bytes));
}

std::string Utf8CodePage::Encode(std::u16string_view text) const {
  return ToLosslessUtf8(FromUtf16(text));
}

}  // namespace carrovan
