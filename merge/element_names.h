#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace carrovan {

// What the merge reads from an element's name. Names are UTF-8, compared exactly.

// The name up to, not including, its last "-".
std::string_view ElementBaseName(std::string_view name);

// The number behind the last "-"; without a "-" the whole name must read as one.
std::optional<std::int32_t> SuffixNumber(std::string_view name);

// Elements whose value the new document always keeps.
bool IsValueElementName(std::string_view name);

enum class ContainerKind { kNone, kState, kCategory, kPanel };

// Containers are told apart by a number in an "ID" child; others by their name.
ContainerKind ContainerKindOf(std::string_view name);

// States and categories, which number the containers in them and note how many there are.
bool HoldsNumberedContainers(std::string_view name);

}  // namespace carrovan
