#pragma once

#include <cstddef>

namespace carrovan {

// Content up to this size, packed and unpacked, is compressed and expanded in one call, which takes
// half the time of a stream or less. Whoever does it holds two buffers of it, so it also sets how
// much memory an archive needs.
inline constexpr std::size_t kBufferBytes = std::size_t{24} << 20;

}  // namespace carrovan
