#include "merge/container.h"

#include <algorithm>

#include "merge/names_and_numbers.h"

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

void SummaryReader::Take(const XmlNode& child, std::string_view name, const ElementIdReading& id) {
  if (name == "Size") return TakeSize(child);
  if (ContainerKindOf(name) == ContainerKind::kNone) return;
  if (const std::optional<std::int32_t> suffix = SuffixNumber(name)) {
    highestSuffix_ = std::max(highestSuffix_, *suffix);
    hasSuffix_ = true;
  }
  TakeLateId(id);
}

void SummaryReader::TakeLateId(const ElementIdReading& id) {
  if (!id.hasText) return;
  hasId_ = true;
  spoiled_ = spoiled_ || !id.id;
}

void SummaryReader::TakeSize(const XmlNode& child) {
  const XmlNode content = child.FirstChild();
  if (!content) return;
  const bool isText = content.IsText();
  if (!foundSizePlace_ && isText) sizeText_ = content;
  if (isText) {
    ReadSize(child);
    hasSize_ = true;
    sizeElement_ = child;
  }
  foundSizePlace_ = true;
}

void SummaryReader::ReadSize(const XmlNode& sizeElement) {
  const std::optional<std::int32_t> size = ReadWholeInteger(sizeElement.Text());
  spoiled_ = spoiled_ || !size;
  size_ = size.value_or(0);
}

void SummaryReader::NoteSizeWritten() {
  if (sizeElement_) ReadSize(sizeElement_);
}

std::optional<ContainerSummary> SummaryReader::Result() const {
  if (spoiled_ || !hasSize_ || !hasId_ || !hasSuffix_) return std::nullopt;
  return ContainerSummary{size_, highestSuffix_, sizeText_};
}

std::optional<ContainerSummary> ReadContainerSummary(const XmlNode& element) {
  if (!HoldsNumberedContainers(element.Name())) return std::nullopt;
  SummaryReader reader;
  for (XmlNode child = ThisOrNextElement(element.FirstChild()); child;
       child = ThisOrNextElement(child.NextSibling())) {
    const std::string_view name = child.Name();
    reader.Take(child, name, ReadIdText(child, name));
  }
  return reader.Result();
}

}  // namespace carrovan
