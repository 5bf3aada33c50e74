#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace carrovan {

// Hashes for tables whose keys come from foreign documents. They differ from one start of the
// program to the next, so that no document can be made whose keys all fall on the same place. Every
// bit of a hash is as good as the others.
std::uint64_t ScatteredHash(std::uint64_t key);
std::uint64_t ScatteredHash(std::string_view text);

// For the standard containers of numbers.
struct ScatteredNumber {
  std::size_t operator()(std::uint64_t key) const {
    return static_cast<std::size_t>(ScatteredHash(key));
  }
};

}  // namespace carrovan
