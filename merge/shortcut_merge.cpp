#include "merge/shortcut_merge.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <set>
#include <unordered_set>

#include "merge/integer_text.h"
#include "platform/text.h"

namespace carrovan {
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
  for (const FolderEntry& entry : files.ListFolder(folder)) {
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
  std::unordered_set<std::uint64_t> taken;
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
