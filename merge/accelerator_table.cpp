#include "merge/accelerator_table.h"

#include <algorithm>
#include <stack>
#include <string>
#include <utility>

#include "merge/container.h"
#include "merge/integer_text.h"

namespace carrovan {
namespace {

constexpr std::string_view kEntryMark = "Accels-";

bool IsEntry(const XmlNode& node) { return node.Name().find(kEntryMark) != std::string_view::npos; }

XmlNode ThisOrNextEntry(XmlNode node) {
  while (node && !IsEntry(node)) node = node.NextSibling();
  return node;
}

XmlNode FirstEntry(const XmlNode& table) {
  return table ? ThisOrNextEntry(table.FirstChild()) : XmlNode();
}

// The name from its eighth 16-bit unit on. Names are UTF-8, where a lead byte of F0 and above
// stands for two units; half a character is no digit, so that it does not matter that it is lost.
std::string_view BehindSevenUnits(std::string_view name) {
  std::size_t units = 0;
  std::size_t position = 0;
  const auto isContinuation = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; };
  while (units < kEntryMark.size() && position < name.size()) {
    units += static_cast<unsigned char>(name[position]) >= 0xF0 ? 2 : 1;
    do ++position;
    while (position < name.size() && isContinuation(name[position]));
  }
  return units > kEntryMark.size() ? std::string_view() : name.substr(position);
}

std::int32_t ReadField(const XmlNode& entry, std::string_view name) {
  const XmlNode field = FirstChildElement(entry, name);
  return field ? ReadLenientInteger(field.Text()) : 0;
}

// The next node of the tree in document order; `above` holds the node's ancestors.
XmlNode NextInDocument(XmlNode node, std::stack<XmlNode>& above) {
  if (XmlNode child = node.FirstChild()) {
    above.push(std::move(node));
    return child;
  }
  XmlNode next = node.NextSibling();
  while (!next && !above.empty()) {
    next = above.top().NextSibling();
    above.pop();
  }
  return next;
}

bool AppendField(XmlDocument& document, const XmlNode& entry, std::string_view name,
                 std::int32_t value) {
  const XmlNode field = document.CreateElement(name);
  return field && field.SetText(std::to_wstring(value)) && entry.AppendChild(field);
}

}  // namespace

XmlNode FindAcceleratorTableElement(XmlDocument& document, std::string_view tableName) {
  std::stack<XmlNode> above;
  for (XmlNode node = document.Root(); node; node = NextInDocument(std::move(node), above)) {
    if (node.IsElement() && node.Name() == tableName && FirstEntry(node)) return node;
  }
  return {};
}

AcceleratorTable ReadAcceleratorTable(XmlDocument& document, std::string_view tableName) {
  AcceleratorTable records;
  XmlNode entry = FirstEntry(FindAcceleratorTableElement(document, tableName));
  for (; entry; entry = ThisOrNextEntry(entry.NextSibling())) {
    const AcceleratorRecord record{ReadField(entry, "Command"), ReadField(entry, "Ctrl"),
                                   ReadField(entry, "Key")};
    if (record.command != 0) records.emplace(record.command, record);
  }
  return records;
}

std::int32_t ReadAcceleratorCount(const XmlNode& table) {
  return table ? ReadField(table, "Count") : 0;
}

std::int32_t HighestAcceleratorIndex(const XmlNode& table) {
  std::int32_t highest = -1;
  for (XmlNode entry = FirstEntry(table); entry; entry = ThisOrNextEntry(entry.NextSibling())) {
    highest = std::max(highest, ReadLenientInteger(BehindSevenUnits(entry.Name())));
  }
  return highest;
}

bool WriteAcceleratorEntry(XmlDocument& document, const XmlNode& table, std::int32_t index,
                           const AcceleratorRecord& record) {
  if (!table) return false;
  const XmlNode entry = document.CreateElement(std::string(kEntryMark) + std::to_string(index));
  return entry && AppendField(document, entry, "Command", record.command) &&
         AppendField(document, entry, "Ctrl", record.ctrl) &&
         AppendField(document, entry, "Key", record.key) && table.AppendChild(entry);
}

void WriteAcceleratorCount(const XmlNode& table, std::int32_t count) {
  const XmlNode element = table ? FirstChildElement(table, "Count") : XmlNode();
  // A count that the DOM refuses stays as it is.
  if (element) static_cast<void>(element.SetText(std::to_wstring(count)));
}

}  // namespace carrovan
