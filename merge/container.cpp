#include "merge/container.h"

#include <algorithm>
#include <utility>

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

XmlNode FirstIdChild(const XmlNode& element, std::string_view name) {
  if (ContainerKindOf(name) == ContainerKind::kNone) return {};
  return FirstChildElement(element, kIdElementName);
}

ElementIdReading ReadIdChild(const XmlNode& idChild) {
  if (!idChild || !LeadingText(idChild)) return {};
  return {true, ReadWholeInteger(idChild.Text())};
}

std::optional<std::int32_t> ReadElementId(const XmlNode& element) {
  return ReadIdChild(FirstIdChild(element, element.Name())).id;
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
  const bool isFirst = !std::exchange(foundSizePlace_, true);
  if (!content.IsText()) return;
  const std::wstring text = child.Text();
  const std::optional<std::int32_t> size = ReadWholeInteger(text);
  spoiled_ = spoiled_ || !size;
  size_ = size.value_or(0);
  hasSize_ = true;
  writtenSizeCounts_ = isFirst;
  if (!isFirst) return;
  sizeText_ = content;
  behindSizeText_ = text.substr(content.Text().size());
}

void SummaryReader::NoteSizeWritten(std::int32_t size) {
  if (spoiled_) return;
  const std::optional<std::int32_t> read =
      ReadWholeInteger(std::to_wstring(size) + behindSizeText_);
  spoiled_ = !read;
  if (read && writtenSizeCounts_) size_ = *read;
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
    reader.Take(child, name, ReadIdChild(FirstIdChild(child, name)));
  }
  return reader.Result();
}

}  // namespace carrovan
