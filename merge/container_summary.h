#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "merge/container.h"
#include "platform/xml_node.h"

namespace carrovan {

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
  void NoteSizeWritten();

  // Nothing without a size, without a numbered container that has an ID, or with one of these
  // numbers spoiled.
  std::optional<ContainerSummary> Result() const;

 private:
  void TakeSize(const XmlNode& child);
  void ReadSize(const XmlNode& sizeElement);

  static constexpr std::int32_t kNoSuffix = -10000;

  std::int32_t size_ = 0;
  std::int32_t highestSuffix_ = kNoSuffix;
  XmlNode sizeText_;
  XmlNode sizeElement_;  // the one whose size counts, which may be another than the one written to
  bool foundSizePlace_ = false;
  bool hasSize_ = false;
  bool hasId_ = false;
  bool hasSuffix_ = false;
  bool spoiled_ = false;
};

// Nothing for an element that is not a state or a category.
std::optional<ContainerSummary> ReadContainerSummary(const XmlNode& element);

}  // namespace carrovan
