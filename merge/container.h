#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/xml_node.h"

namespace carrovan {

// The first node at or behind `node` among its siblings that is an element; none after the last.
XmlNode ThisOrNextElement(XmlNode node);

// The first child element of a name; none when there is none.
XmlNode FirstChildElement(const XmlNode& element, std::string_view name);

// The first child when it is a text node; otherwise none.
XmlNode LeadingText(const XmlNode& element);

inline constexpr std::string_view kIdElementName = "ID";

// What the first "ID" child of a container says. Other elements have no ID. The name is the
// element's.
struct ElementIdReading {
  bool hasText = false;            // the "ID" child begins with a text node,
  std::optional<std::int32_t> id;  // and all of its text reads as this number
};
ElementIdReading ReadIdText(const XmlNode& element, std::string_view name);

// The same, of the "ID" child itself or of none.
ElementIdReading ReadIdChild(const XmlNode& idElement);

std::optional<std::int32_t> ReadElementId(const XmlNode& element);

// The text node of the first "Size" child that has children, when that is where its text begins.
// None for an element that is not a state or a category.
XmlNode FindContainerSizeText(const XmlNode& element);

// False when the element has no place for its size.
bool SetContainerSize(const XmlNode& element, std::int32_t size);

// Appends copies of all children of one node to another.
void CopyChildNodes(const XmlNode& source, const XmlNode& target);

}  // namespace carrovan
