#pragma once

#include <cstdint>
#include <map>
#include <string_view>

#include "platform/xml_dom.h"

namespace carrovan {

// A keyboard shortcut.
struct AcceleratorRecord {
  std::int32_t command = 0;
  std::int32_t ctrl = 0;
  std::int32_t key = 0;

  bool operator==(const AcceleratorRecord&) const = default;
};

// By command; records of one command keep the order in which they were read.
using AcceleratorTable = std::multimap<std::int32_t, AcceleratorRecord>;

// Element names are UTF-8. An entry of a table is any child whose name contains "Accels-".

// The first element of the name, in document order, that holds an entry; none when there is none.
XmlNode FindAcceleratorTableElement(XmlDocument& document, std::string_view tableName);

// Records without a command are left out. Empty when the document or the table is missing.
AcceleratorTable ReadAcceleratorTable(XmlDocument& document, std::string_view tableName);

// What follows works on a table element, which may be none.

// The text of the "Count" child; 0 when there is none.
std::int32_t ReadAcceleratorCount(const XmlNode& table);

// The largest number of an entry, -1 when there is no entry.
std::int32_t HighestAcceleratorIndex(const XmlNode& table);

// Appends an entry. False without a table or when the DOM fails.
bool WriteAcceleratorEntry(XmlDocument& document, const XmlNode& table, std::int32_t index,
                           const AcceleratorRecord& record);

// Does nothing when there is no "Count" child.
void WriteAcceleratorCount(const XmlNode& table, std::int32_t count);

}  // namespace carrovan
