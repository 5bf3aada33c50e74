#include <sys/mman.h>
#include <unistd.h>

#include <memory>

#include "platform/large_buffer.h"

namespace carrovan {

void ExpectToFill(void* buffer, std::size_t bytes) {
  constexpr std::size_t kLeastBytes = std::size_t{8} << 20;  // some large pages lie within that
  const auto pageBytes = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  if (bytes < kLeastBytes || std::align(pageBytes, pageBytes, buffer, bytes) == nullptr) return;
  madvise(buffer, bytes, MADV_HUGEPAGE);
}

}  // namespace carrovan
