#include <bit>

#include "rewrite/unit_text.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace carrovan {
namespace {

// Positions that are looked at in one go.
constexpr std::size_t kStride = 16;

#ifdef __SSE2__

// The first and the last unit of a search text.
class Probes {
 public:
  explicit Probes(std::u16string_view search)
      : distance_(search.size() - 1),
        first_(_mm_set1_epi16(static_cast<short>(search.front()))),
        last_(_mm_set1_epi16(static_cast<short>(search.back()))) {}

  // A bit for each of kStride positions at which a match may begin.
  unsigned BeginningsFrom(const char16_t* at) const {
    const __m128i both = _mm_packs_epi16(Compare(at), Compare(at + kStride / 2));
    return static_cast<unsigned>(_mm_movemask_epi8(both));
  }

 private:
  static __m128i UnitsAt(const char16_t* at) {
    return _mm_loadu_si128(static_cast<const __m128i*>(static_cast<const void*>(at)));
  }

  __m128i Compare(const char16_t* at) const {
    return _mm_and_si128(_mm_cmpeq_epi16(UnitsAt(at), first_),
                         _mm_cmpeq_epi16(UnitsAt(at + distance_), last_));
  }

  std::size_t distance_;
  __m128i first_;
  __m128i last_;
};

#else

// The first unit of a search text.
class Probes {
 public:
  explicit Probes(std::u16string_view search) : first_(search.front()) {}

  // A bit for each of kStride positions at which a match may begin.
  unsigned BeginningsFrom(const char16_t* at) const {
    unsigned bits = 0;
    for (std::size_t i = 0; i < kStride; ++i) bits |= unsigned{at[i] == first_} << i;
    return bits;
  }

 private:
  char16_t first_;
};

#endif

}  // namespace

std::size_t FindUnits(std::u16string_view text, std::u16string_view search, std::size_t from) {
  if (search.empty()) return kNotFound;
  const Probes probes(search);
  const std::size_t reach = kStride + search.size() - 1;
  for (; from < text.size() && text.size() - from >= reach; from += kStride) {
    for (unsigned bits = probes.BeginningsFrom(text.data() + from); bits != 0; bits &= bits - 1) {
      const std::size_t at = from + static_cast<std::size_t>(std::countr_zero(bits));
      if (text.substr(at, search.size()) == search) return at;
    }
  }
  return text.find(search, from);
}

}  // namespace carrovan
