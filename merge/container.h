#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/xml_dom.h"

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

// The first node at or behind `node` among its siblings that is an element; none after the last.
XmlNode ThisOrNextElement(XmlNode node);

// The first child element of a name; none when there is none.
XmlNode FirstChildElement(const XmlNode& element, std::string_view name);

// The first child when it is a text node; otherwise none.
XmlNode LeadingText(const XmlNode& element);

inline constexpr std::string_view kIdElementName = "ID";

// The first "ID" child of a container; none of other elements. The name is the element's.
XmlNode FirstIdChild(const XmlNode& element, std::string_view name);

// What that child says.
struct ElementIdReading {
  bool hasText = false;            // the "ID" child begins with a text node,
  std::optional<std::int32_t> id;  // and all of its text reads as this number
};
ElementIdReading ReadIdChild(const XmlNode& idChild);  // or of none

std::optional<std::int32_t> ReadElementId(const XmlNode& element);

// The text node of the first "Size" child that has children, when that is where its text begins.
// None for an element that is not a state or a category.
XmlNode FindContainerSizeText(const XmlNode& element);

// False when the element has no place for its size.
bool SetContainerSize(const XmlNode& element, std::int32_t size);

// Appends copies of all children of one node to another.
void CopyChildNodes(const XmlNode& source, const XmlNode& target);

// What a container says about the numbered containers in it.
struct ContainerSummary {
  std::int32_t size = 0;
  std::int32_t highestSuffix = 0;
  XmlNode sizeText;  // where the size is written; none when there is no such place
};

// Collects a summary from child elements, taken in document order. It can be kept while children
// are appended, and then says what a fresh reading would.
class SummaryReader {
 public:
  // The name and the ID are the child's; one that is not a container has no ID.
  void Take(const XmlNode& child, std::string_view name, const ElementIdReading& id);

  // A container that was taken without an ID has one now.
  void TakeLateId(const ElementIdReading& id);

  // A size was written to the place that the summary names.
  void NoteSizeWritten(std::int32_t size);

  // Nothing without a size, without a numbered container that has an ID, or with one of these
  // numbers spoiled.
  std::optional<ContainerSummary> Result() const;

 private:
  void TakeSize(const XmlNode& child);

  static constexpr std::int32_t kNoSuffix = -10000;

  std::int32_t size_ = 0;
  std::int32_t highestSuffix_ = kNoSuffix;
  XmlNode sizeText_;
  std::wstring behindSizeText_;     // in the same element
  bool writtenSizeCounts_ = false;  // another element than the one written to may be what counts
  bool foundSizePlace_ = false;
  bool hasSize_ = false;
  bool hasId_ = false;
  bool hasSuffix_ = false;
  bool spoiled_ = false;
};

// Nothing for an element that is not a state or a category.
std::optional<ContainerSummary> ReadContainerSummary(const XmlNode& element);

}  // namespace carrovan
