#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "merge/accelerator_table.h"
#include "platform/file_system.h"
#include "platform/xml_dom.h"

namespace carrovan {

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
