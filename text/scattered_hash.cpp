#include "text/scattered_hash.h"

#include <cstring>
#include <random>

namespace carrovan {
namespace {

struct Seeds {
  std::uint64_t start;
  std::uint64_t factor;  // odd
};

std::uint64_t RandomNumber(std::random_device& source) {
  const std::uint64_t high = source();
  return high << 32 | source();
}

const Seeds& SeedsOfThisStart() {
  static const Seeds seeds = [] {
    std::random_device source;
    return Seeds{RandomNumber(source), RandomNumber(source) | 1};
  }();
  return seeds;
}

std::uint64_t Mixed(std::uint64_t value, const Seeds& seeds) {
  value *= seeds.factor;
  value ^= value >> 32;
  value *= 0x9E3779B97F4A7C15;
  return value ^ value >> 29;
}

}  // namespace

std::uint64_t ScatteredHash(std::uint64_t key) {
  const Seeds& seeds = SeedsOfThisStart();
  return Mixed(Mixed(key + seeds.start, seeds), seeds);
}

std::uint64_t ScatteredHash(std::string_view text) {
  const Seeds& seeds = SeedsOfThisStart();
  std::uint64_t hash = seeds.start + text.size();
  for (; text.size() >= sizeof(hash); text.remove_prefix(sizeof(hash))) {
    std::uint64_t word = 0;
    std::memcpy(&word, text.data(), sizeof(word));
    hash = Mixed(hash ^ word, seeds);
  }
  std::uint64_t rest = 0;
  std::memcpy(&rest, text.data(), text.size());
  return Mixed(hash ^ rest, seeds);
}

}  // namespace carrovan
