#include <cstddef>
#include <cstdint>

#include "fuzz/fuzz_targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  carrovan::FuzzRegistryScan(std::string(data, data + size));
  return 0;
}
