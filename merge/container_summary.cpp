#include "merge/container_summary.h"

#include <algorithm>

#include "merge/element_names.h"
#include "merge/integer_text.h"

namespace carrovan {

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
