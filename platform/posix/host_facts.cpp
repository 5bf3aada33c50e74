#include "platform/posix/host_facts.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <random>

#include "platform/posix/host_access.h"
#include "text/text.h"

namespace carrovan {
namespace {

std::array<std::uint8_t, 16> RandomBytes() {
  std::random_device device;
  std::uniform_int_distribution<unsigned> anyByte(0, 0xFF);
  std::array<std::uint8_t, 16> bytes = {};
  for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(anyByte(device));
  // The bits that say: made of random numbers.
  bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);
  bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);
  return bytes;
}

}  // namespace

std::optional<std::wstring> RandomGuidSource::NewGuid() {
  constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
  try {
    std::wstring guid = L"{";
    const auto bytes = RandomBytes();
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      if (i == 4 || i == 6 || i == 8 || i == 10) guid.push_back(L'-');
      guid.push_back(kDigits[bytes[i] >> 4]);
      guid.push_back(kDigits[bytes[i] & 0x0F]);
    }
    return guid + L"}";
  } catch (const std::exception&) {
    // The host has no source of random numbers.
    return std::nullopt;
  }
}

std::u16string Utf8CodePage::Decode(std::string_view bytes) const {
  return ToUtf16(FromLosslessUtf8(bytes));
}

std::string Utf8CodePage::Encode(std::u16string_view text) const {
  return ToLosslessUtf8(FromUtf16(text));
}

}  // namespace carrovan
