#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace carrovan {

// Types of registry values, as the system numbers them.
inline constexpr std::uint32_t kRegNone = 0;
inline constexpr std::uint32_t kRegSz = 1;
inline constexpr std::uint32_t kRegExpandSz = 2;
inline constexpr std::uint32_t kRegBinary = 3;
inline constexpr std::uint32_t kRegDword = 4;
inline constexpr std::uint32_t kRegDwordBigEndian = 5;
inline constexpr std::uint32_t kRegMultiSz = 7;
inline constexpr std::uint32_t kRegQword = 11;

// One value of a registry key. The data is what the registry stores: little-endian numbers,
// UTF-16LE text with its terminating zero.
struct RegistryValue {
  std::wstring name;  // empty for the key's default value
  std::uint32_t type = kRegNone;
  std::vector<std::uint8_t> data;

  bool operator==(const RegistryValue&) const = default;
};

RegistryValue MakeStringValue(std::wstring name, const std::wstring& text,
                              std::uint32_t type = kRegSz);
RegistryValue MakeDwordValue(std::wstring name, std::uint32_t number);

}  // namespace carrovan
