#include "merge/ribbon_array_merge.h"

#include <algorithm>
#include <iterator>
#include <unordered_set>

namespace carrovan {
namespace {

using Identifiers = std::unordered_set<std::uint32_t>;

void AddIdentifiers(const sRibbonElement& record, Identifiers& identifiers) {
  identifiers.insert(record.id);
  for (const sRibbonElement& child : record.children) identifiers.insert(child.id);
}

std::ptrdiff_t CountShared(const sRibbonElement& record, const Identifiers& identifiers) {
  const auto isShared = [&](const sRibbonElement& other) { return identifiers.contains(other.id); };
  return (isShared(record) ? 1 : 0) +
         std::count_if(record.children.begin(), record.children.end(), isShared);
}

// Where copies from `source` go: behind the best record, or at the start of an empty list.
std::ptrdiff_t PlaceFor(const sRibbonElement& source, const std::vector<sRibbonElement>& list) {
  Identifiers wanted;
  AddIdentifiers(source, wanted);
  std::ptrdiff_t place = 0;
  std::ptrdiff_t best = -1;
  for (auto record = list.begin(); record != list.end(); ++record) {
    const std::ptrdiff_t shared = CountShared(*record, wanted);
    if (shared <= best) continue;
    best = shared;
    place = std::distance(list.begin(), record) + 1;
  }
  return place;
}

// A record that is missing itself comes whole; of one that is there, the missing children.
std::vector<sRibbonElement> MissingParts(const sRibbonElement& source, const Identifiers& present) {
  if (!present.contains(source.id)) return {source};
  std::vector<sRibbonElement> parts;
  const auto isMissing = [&](const sRibbonElement& child) { return !present.contains(child.id); };
  std::copy_if(source.children.begin(), source.children.end(), std::back_inserter(parts),
               isMissing);
  return parts;
}

}  // namespace

bool MergeRibbonElementArrays(const std::vector<sRibbonElement>& first,
                              std::vector<sRibbonElement>& second) {
  Identifiers present;
  for (const sRibbonElement& record : second) AddIdentifiers(record, present);
  bool added = false;
  for (const sRibbonElement& source : first) {
    const std::vector<sRibbonElement> parts = MissingParts(source, present);
    if (parts.empty()) continue;
    second.insert(second.begin() + PlaceFor(source, second), parts.begin(), parts.end());
    for (const sRibbonElement& part : parts) AddIdentifiers(part, present);
    added = true;
  }
  return added;
}

}  // namespace carrovan
