#pragma once

#include <string>

namespace carrovan {

// Longest path that every function of the system takes as it is: a folder's path must leave room
// for a short file name within the fixed buffers.
inline constexpr std::size_t kLongestPlainPath = 247;

// The path in the form in which the system takes it: a longer one is made absolute and marked with
// "\\?\", which lifts the limit; any other is left alone.
std::wstring SystemPath(const std::wstring& path);

}  // namespace carrovan
