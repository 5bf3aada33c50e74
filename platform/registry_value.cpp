#include "platform/registry_value.h"

#include "platform/text.h"

namespace carrovan {

RegistryValue MakeStringValue(std::wstring name, const std::wstring& text, std::uint32_t type) {
  RegistryValue value{std::move(name), type, {}};
  for (const char16_t unit : ToUtf16(text) + u'\0') {
    value.data.push_back(static_cast<std::uint8_t>(unit & 0xFF));
    value.data.push_back(static_cast<std::uint8_t>(unit >> 8));
  }
  return value;
}

RegistryValue MakeDwordValue(std::wstring name, std::uint32_t number) {
  RegistryValue value{std::move(name), kRegDword, {}};
  for (int shift = 0; shift < 32; shift += 8) {
    value.data.push_back(static_cast<std::uint8_t>(number >> shift));
  }
  return value;
}

}  // namespace carrovan
