#include "rewrite/unit_text.h"

namespace carrovan {
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
