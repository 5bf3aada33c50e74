#include "tests/rewrite/rewrite_bench.h"

#include "text/text.h"

namespace carrovan {

std::string Utf16File(const std::wstring& text) {
  std::string bytes = "\xFF\xFE";
  for (const char16_t unit : ToUtf16(text)) {
    bytes.push_back(static_cast<char>(unit & 0xFF));
    bytes.push_back(static_cast<char>(unit >> 8));
  }
  return bytes;
}

}  // namespace carrovan
