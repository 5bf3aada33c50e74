#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace carrovan {

// Search and replacement on 16-bit units, made for long texts in which matches are rare. Case
// counts.

inline constexpr std::size_t kNotFound = std::u16string_view::npos;

// The first occurrence at or behind `from`; kNotFound also for an empty search text.
std::size_t FindUnits(std::u16string_view text, std::u16string_view search, std::size_t from = 0);

// Replaces every occurrence, found from left to right without overlap, and gives their number. The
// text is not touched when there is none. An empty search text replaces nothing.
std::size_t ReplaceUnits(std::u16string& text, std::u16string_view search,
                         std::u16string_view replacement);

}  // namespace carrovan
