#pragma once

#include <cstddef>

namespace carrovan {

// Tells the system that a fresh buffer is about to be filled. Where it can, it then provides a
// large one in large pages, rather than interrupting the program at each of the many small ones.
void ExpectToFill(void* buffer, std::size_t bytes);

}  // namespace carrovan
