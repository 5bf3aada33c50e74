#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace carrovan {

// Decimal numbers as the customization files hold them. Leading white space and a sign are
// accepted; only the digits 0 to 9 are digits.

// The number, when nothing but digits follows up to the end and it fits 32 bits.
std::optional<std::int32_t> ReadWholeInteger(std::string_view text);
std::optional<std::int32_t> ReadWholeInteger(std::wstring_view text);

// The number up to the first other character; 0 without digits, the nearest number when it does not
// fit 32 bits.
std::int32_t ReadLenientInteger(std::string_view text);
std::int32_t ReadLenientInteger(std::wstring_view text);

// Counters wrap around at the largest number instead of failing.
std::int32_t WrappingSum(std::int32_t a, std::int32_t b);

}  // namespace carrovan
