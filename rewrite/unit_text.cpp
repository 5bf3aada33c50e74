#include "rewrite/unit_text.h"

#include <algorithm>
#include <cstdint>

namespace carrovan {
namespace {

// Positions that are looked at in one go.
constexpr std::size_t kStride = 32;

// The first and the last unit of a search text.
class Probes {
 public:
  explicit Probes(std::u16string_view search)
      : distance_(search.size() - 1), first_(search.front()), last_(search.back()) {}

  // Whether a match may begin at one of kStride positions. Without a way out of the loop the
  // compiler compares many positions at once.
  bool MayBeginFrom(const char16_t* at) const {
    std::uint16_t hit = 0;
    for (std::size_t i = 0; i < kStride; ++i) {
      const int both = AllBits(at[i] == first_) & AllBits(at[i + distance_] == last_);
      hit = static_cast<std::uint16_t>(hit | both);
    }
    return hit != 0;
  }

 private:
  // As the processor's own comparison gives them.
  static std::uint16_t AllBits(bool set) { return set ? 0xFFFF : 0; }

  std::size_t distance_;
  char16_t first_;
  char16_t last_;
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
