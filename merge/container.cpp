#include "merge/container.h"

#include "merge/element_names.h"
#include "merge/integer_text.h"

namespace carrovan {
XmlNode ThisOrNextElement(XmlNode node) {
  while (node && !node.IsElement()) node = node.NextSibling();
  return node;
}

XmlNode FirstChildElement(const XmlNode& element, std::string_view name) {
  XmlNode child = ThisOrNextElement(element.FirstChild());
  while (child && child.Name() != name) child = ThisOrNextElement(child.NextSibling());
  return child;
}

XmlNode LeadingText(const XmlNode& element) {
  XmlNode first = element.FirstChild();
  return first && first.IsText() ? first : XmlNode();
}

ElementIdReading ReadIdText(const XmlNode& element, std::string_view name) {
  if (ContainerKindOf(name) == ContainerKind::kNone) return {};
  return ReadIdChild(FirstChildElement(element, kIdElementName));
}

ElementIdReading ReadIdChild(const XmlNode& idElement) {
  if (!idElement || !LeadingText(idElement)) return {};
  return {true, ReadWholeInteger(idElement.Text())};
}

std::optional<std::int32_t> ReadElementId(const XmlNode& element) {
  return ReadIdText(element, element.Name()).id;
}

XmlNode FindContainerSizeText(const XmlNode& element) {
  if (!HoldsNumberedContainers(element.Name())) return {};
  for (XmlNode child = ThisOrNextElement(element.FirstChild()); child;
       child = ThisOrNextElement(child.NextSibling())) {
    if (child.Name() == "Size" && child.FirstChild()) return LeadingText(child);
  }
  return {};
}

bool SetContainerSize(const XmlNode& element, std::int32_t size) {
  const XmlNode text = FindContainerSizeText(element);
  return text && text.SetText(std::to_wstring(size));
}

void CopyChildNodes(const XmlNode& source, const XmlNode& target) {
  for (XmlNode child = source.FirstChild(); child; child = child.NextSibling()) {
    // A child that cannot be copied is left out, like every child that the DOM fails on.
    static_cast<void>(target.AppendCopy(child));
  }
}

}  // namespace carrovan
