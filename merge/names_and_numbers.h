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

// What the merge reads from an element's name. Names are UTF-8, compared exactly.

// The name up to, not including, its last "-".
std::string_view ElementBaseName(std::string_view name);

// The number behind the last "-"; without a "-" the whole name must read as one.
std::optional<std::int32_t> SuffixNumber(std::string_view name);

// Elements whose value the new document always keeps.
bool IsValueElementName(std::string_view name);

enum class ContainerKind { kNone, kState, kCategory, kPanel };

// Containers are distinguished by a number in an "ID" child; others by their name.
ContainerKind ContainerKindOf(std::string_view name);

// States and categories, which number the containers in them and note how many there are.
bool HoldsNumberedContainers(std::string_view name);

}  // namespace carrovan
