#include "merge/ribbon_merge.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <unordered_set>

#include "merge/container.h"
#include "merge/names_and_numbers.h"
#include "merge/ribbon_codec.h"
#include "text/scattered_hash.h"

namespace carrovan {
namespace {

bool IsPanel(const XmlNode& element) {
  return ContainerKindOf(element.Name()) == ContainerKind::kPanel;
}

bool IsRibbonElement(const XmlNode& node) {
  return node.IsElement() && ElementBaseName(node.Name()) == "RibbonElement";
}

// The created elements are left outside the panel, as the product leaves them.
void RewriteRibbonElements(const XmlNode& panel, const std::vector<sRibbonElement>& records,
                           XmlDocument& document) {
  RemoveRibbonElements(panel);
  for (std::size_t i = 0; i < records.size(); ++i) {
    const XmlNode element = document.CreateElement("RibbonElement_" + std::to_string(i));
    if (element) static_cast<void>(element.SetText(RibbonElementToText(records[i])));
  }
  SetContainerSize(panel, static_cast<std::int32_t>(records.size()));
}

}  // namespace

bool HasRibbonElements(const XmlNode& panel) {
  for (XmlNode child = panel.FirstChild(); child; child = child.NextSibling()) {
    if (IsRibbonElement(child)) return true;
  }
  return false;
}

bool ReadRibbonElements(const XmlNode& panel, std::vector<sRibbonElement>& records) {
  const std::size_t before = records.size();
  for (XmlNode child = panel.FirstChild(); child; child = child.NextSibling()) {
    if (!IsRibbonElement(child)) continue;
    // A text that does not read leaves the record fresh, which keeps the list's length.
    static_cast<void>(RibbonElementFromText(child.Text(), records.emplace_back()));
  }
  return records.size() > before;
}

void RemoveRibbonElements(const XmlNode& panel) {
  for (XmlNode child = panel.FirstChild(); child;) {
    XmlNode next = child.NextSibling();
    if (IsRibbonElement(child) && panel.RemoveChild(child) && next) next = next.NextSibling();
    child = std::move(next);
  }
}

bool MergeRibbonPanel(const XmlNode& oldPanel, const XmlNode& newPanel, XmlDocument& newDocument) {
  if (!oldPanel || !newPanel || !IsPanel(oldPanel) || !IsPanel(newPanel)) return false;
  std::vector<sRibbonElement> first;
  if (!ReadRibbonElements(oldPanel, first)) return false;
  // The second list comes from the old panel as well, which reads the same again.
  std::vector<sRibbonElement> second = first;
  if (!MergeRibbonElementArrays(first, second)) return false;
  RewriteRibbonElements(newPanel, second, newDocument);
  return true;
}

namespace {

using Identifiers = std::unordered_set<std::uint32_t, ScatteredNumber>;

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
