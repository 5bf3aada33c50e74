#include "merge/ribbon_panel.h"

#include <string>

#include "merge/container.h"
#include "merge/element_names.h"
#include "merge/ribbon_array_merge.h"
#include "merge/ribbon_codec.h"

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

}  // namespace carrovan
