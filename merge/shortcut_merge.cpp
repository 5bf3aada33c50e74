#include "merge/shortcut_merge.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <set>
#include <stack>
#include <string>
#include <unordered_set>
#include <utility>

#include "merge/container.h"
#include "merge/names_and_numbers.h"
#include "text/scattered_hash.h"
#include "text/text.h"

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

namespace {

std::uint64_t Combination(const AcceleratorRecord& record) {
  return std::uint64_t{static_cast<std::uint32_t>(record.ctrl)} << 32 |
         static_cast<std::uint32_t>(record.key);
}

std::set<std::int32_t> KeysOf(const AcceleratorTable& table, std::int32_t command) {
  std::set<std::int32_t> keys;
  const auto [first, last] = table.equal_range(command);
  for (auto it = first; it != last; ++it) keys.insert(it->second.key);
  return keys;
}

void WriteRecords(XmlDocument& document, std::string_view tableName,
                  const std::vector<AcceleratorRecord>& records) {
  const XmlNode table = FindAcceleratorTableElement(document, tableName);
  std::int32_t index = HighestAcceleratorIndex(table);
  std::int32_t count = ReadAcceleratorCount(table);
  for (const AcceleratorRecord& record : records) {
    index = WrappingSum(index, 1);
    if (WriteAcceleratorEntry(document, table, index, record)) count = WrappingSum(count, 1);
  }
  WriteAcceleratorCount(table, count);
}

std::vector<std::wstring> ListShortcutFiles(const FileReader& files, const std::wstring& folder) {
  std::vector<std::wstring> names;
  for (const FolderEntry& entry : ListFolder(files, folder)) {
    if (IsContentFile(entry) && EndsWithIgnoringAsciiCase(entry.name, L".xml")) {
      names.push_back(entry.name);
    }
  }
  return names;
}

std::wstring PathIn(const std::wstring& folder, const std::wstring& name) {
  return folder + L"\\" + name;
}

// Puts the merged file in the new one's place. When that fails after the new one is gone, the old
// file takes the place, and the file does not count as updated.
bool ReplaceByMerged(const std::wstring& oldPath, const std::wstring& newPath,
                     const std::wstring& temporaryPath, FileSystem& files) {
  const bool removed = files.RemoveFile(newPath) == kSystemOk;
  if (removed && files.MoveTo(temporaryPath, newPath) == kSystemOk) return true;
  const bool nothingInPlace = removed && files.CopyOver(oldPath, newPath) != kSystemOk;
  // The merged file is then the only one left of the three.
  if (!nothingInPlace) static_cast<void>(files.RemoveFile(temporaryPath));
  return false;
}

}  // namespace

std::vector<AcceleratorRecord> RecordsToAdd(const AcceleratorTable& oldTable,
                                            const AcceleratorTable& newTable) {
  std::unordered_set<std::uint64_t, ScatteredNumber> taken;
  for (const auto& [command, record] : newTable) taken.insert(Combination(record));
  std::vector<AcceleratorRecord> added;
  for (auto it = oldTable.begin(); it != oldTable.end();) {
    const std::int32_t command = it->first;
    const std::set<std::int32_t> newKeys = KeysOf(newTable, command);
    // A command with the same keys on both sides has none that the new one lacks.
    for (; it != oldTable.end() && it->first == command; ++it) {
      const AcceleratorRecord& record = it->second;
      const bool lacking = !newKeys.contains(record.key);
      if (lacking && !taken.contains(Combination(record))) added.push_back(record);
    }
  }
  return added;
}

bool MergeShortcutFile(const std::wstring& oldPath, const std::wstring& newPath,
                       const std::wstring& outputPath, std::string_view tableName, XmlDom& dom) {
  // Whether the DOM started is not looked at: without it no document loads.
  const std::unique_ptr<XmlSession> session = dom.Begin();
  const std::unique_ptr<XmlDocument> oldDocument = session->NewDocument();
  if (oldDocument == nullptr || !oldDocument->Load(oldPath)) return false;
  const std::unique_ptr<XmlDocument> newDocument = session->NewDocument();
  if (newDocument == nullptr || !newDocument->Load(newPath)) return false;
  const std::vector<AcceleratorRecord> records = RecordsToAdd(
      ReadAcceleratorTable(*oldDocument, tableName), ReadAcceleratorTable(*newDocument, tableName));
  if (records.empty()) return false;
  WriteRecords(*newDocument, tableName, records);
  return newDocument->Save(outputPath);
}

bool MergeShortcutFolders(const std::wstring& oldFolder, const std::wstring& newFolder,
                          const std::wstring& tableName, FileSystem& files, XmlDom& dom,
                          std::vector<std::wstring>* merged) {
  const std::vector<std::wstring> listed = ListShortcutFiles(files, oldFolder);
  const std::unordered_set<std::wstring> oldNames(listed.begin(), listed.end());
  const std::string table = ToUtf8(tableName);
  bool updated = false;
  for (const std::wstring& name : ListShortcutFiles(files, newFolder)) {
    if (!oldNames.contains(name)) continue;
    const std::wstring oldPath = PathIn(oldFolder, name);
    const std::wstring newPath = PathIn(newFolder, name);
    const std::wstring temporaryPath = PathIn(newFolder, L"temp_" + name);
    if (!MergeShortcutFile(oldPath, newPath, temporaryPath, table, dom)) {
      static_cast<void>(files.RemoveFile(temporaryPath));
    } else if (ReplaceByMerged(oldPath, newPath, temporaryPath, files)) {
      updated = true;
      if (merged != nullptr) merged->push_back(name);
    }
  }
  return updated;
}

}  // namespace carrovan
