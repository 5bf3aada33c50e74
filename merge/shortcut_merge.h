#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file_system.h"
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

// Carries keyboard shortcuts of an old installation into the files of a newer one. A shortcut of
// the new file is never changed or removed, and a key combination that it uses is not given away.
// Every failure shows in the result only.

// Updates each XML file of the new folder that has a namesake in the old folder. True when at least
// one was replaced by a merged version. `merged`, where it is given, gets the names of those.
bool MergeShortcutFolders(const std::wstring& oldFolder, const std::wstring& newFolder,
                          const std::wstring& tableName, FileSystem& files, XmlDom& dom,
                          std::vector<std::wstring>* merged = nullptr);

// Writes the merged document to the output path. False, and nothing written, when there is nothing
// to add or anything fails.
bool MergeShortcutFile(const std::wstring& oldPath, const std::wstring& newPath,
                       const std::wstring& outputPath, std::string_view tableName, XmlDom& dom);

// The old records whose command has other keys in the new table and whose combination of ctrl and
// key the new table leaves free, in the old table's order. Two of them may share a combination.
std::vector<AcceleratorRecord> RecordsToAdd(const AcceleratorTable& oldTable,
                                            const AcceleratorTable& newTable);

}  // namespace carrovan
