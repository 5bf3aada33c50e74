#include "rewrite/unit_text.h"

#include <algorithm>
#include <cstdint>

namespace carrovan {
namespace {

// Positions that are looked at in one go.
constexpr std::size_t kStride = 64;

// Three units of a search text, spread over it.
class Probes {
 public:
  explicit Probes(std::u16string_view search)
      : middle_(search.size() / 2),
        last_(search.size() - 1),
        units_{search.front(), search[middle_], search.back()} {}

  // Whether a match may begin at one of kStride positions. Without a way out of the loop the
  // compiler compares many positions at once.
  bool MayBeginFrom(const char16_t* at) const {
    std::uint16_t hit = 0;
    for (std::size_t i = 0; i < kStride; ++i) {
      const auto difference = static_cast<std::uint16_t>(
          (at[i] ^ units_[0]) | (at[i + middle_] ^ units_[1]) | (at[i + last_] ^ units_[2]));
      // All bits, as the processor's own comparison gives them.
      hit = static_cast<std::uint16_t>(hit | (difference == 0 ? 0xFFFF : 0));
    }
    return hit != 0;
  }

 private:
  std::size_t middle_;
  std::size_t last_;
  char16_t units_[3];
};

}  // namespace

std::size_t FindUnits(std::u16string_view text, std::u16string_view search, std::size_t from) {
  if (search.empty()) return kNotFound;
  const Probes probes(search);
  const std::size_t reach = kStride + search.size() - 1;
  for (; from < text.size() && text.size() - from >= reach; from += kStride) {
    if (!probes.MayBeginFrom(text.data() + from)) continue;
    const std::size_t hit = text.substr(from, reach).find(search);
    if (hit != kNotFound) return from + hit;
  }
  return text.find(search, from);
}

namespace {

// Nothing has to move.
std::size_t ReplaceWithEqualLength(std::u16string& text, std::size_t hit,
                                   std::u16string_view search, std::u16string_view replacement) {
  std::size_t count = 0;
  for (; hit != kNotFound; hit = FindUnits(text, search, hit + search.size())) {
    replacement.copy(text.data() + hit, replacement.size());
    ++count;
  }
  return count;
}

}  // namespace

std::size_t ReplaceUnits(std::u16string& text, std::u16string_view search,
                         std::u16string_view replacement) {
  std::size_t hit = FindUnits(text, search);
  if (hit == kNotFound) return 0;
  if (search.size() == replacement.size()) {
    return ReplaceWithEqualLength(text, hit, search, replacement);
  }
  std::u16string result;
  result.reserve(text.size() + text.size() / 8);
  std::size_t count = 0;
  std::size_t from = 0;
  for (; hit != kNotFound; hit = FindUnits(text, search, from)) {
    result.append(text, from, hit - from).append(replacement);
    from = hit + search.size();
    ++count;
  }
  result.append(text, from);
  text.swap(result);
  return count;
}

}  // namespace carrovan
