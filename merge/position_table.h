#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace carrovan {

// A hash table of positions in somebody's list, four bytes a slot. Whoever keeps the list gives the
// hashes and compares the keys.
class PositionTable {
 public:
  static constexpr std::uint32_t kNone = 0xFFFFFFFF;

  // The position for which `isKey` holds, or kNone.
  template <typename IsKey>
  std::uint32_t Find(std::size_t hash, IsKey isKey) const {
    if (slots_.empty()) return kNone;
    std::size_t slot = hash & (slots_.size() - 1);
    while (slots_[slot] != kNone && !isKey(slots_[slot])) slot = Next(slot);
    return slots_[slot];
  }

  // Puts a position in the place of the one with the same key, or adds it. `hashOf` gives the hash
  // of a position that is in the table.
  template <typename IsKey, typename HashOf>
  void Put(std::size_t hash, std::uint32_t position, IsKey isKey, HashOf hashOf) {
    if ((used_ + 1) * 4 > slots_.size() * 3) Grow(hashOf);
    std::size_t slot = hash & (slots_.size() - 1);
    while (slots_[slot] != kNone && !isKey(slots_[slot])) slot = Next(slot);
    if (slots_[slot] == kNone) ++used_;
    slots_[slot] = position;
  }

 private:
  std::size_t Next(std::size_t slot) const { return (slot + 1) & (slots_.size() - 1); }

  template <typename HashOf>
  void Grow(HashOf hashOf) {
    std::vector<std::uint32_t> smaller(slots_.empty() ? 64 : slots_.size() * 2, kNone);
    smaller.swap(slots_);
    for (const std::uint32_t position : smaller) {
      if (position == kNone) continue;
      std::size_t slot = hashOf(position) & (slots_.size() - 1);
      while (slots_[slot] != kNone) slot = Next(slot);
      slots_[slot] = position;
    }
  }

  std::vector<std::uint32_t> slots_;  // a power of two of them
  std::size_t used_ = 0;
};

}  // namespace carrovan
