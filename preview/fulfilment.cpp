#include "preview/fulfilment.h"

#include <algorithm>

#include "platform/registry_path.h"
#include "platform/text.h"

namespace carrovan {
namespace {

using Lines = std::vector<std::wstring>;

void CheckFile(const FileChange& change, const FileReader& files, Lines& lines) {
  FileImage now;
  const SystemCode code = ReadFileImage(files, change.path, now);
  if (code != kSystemOk) {
    lines.push_back(L"Cannot be read back: " + change.path + L": " + DescribeSystemCode(code));
  } else if (now != change.after) {
    lines.push_back(L"Not as it was to become: " + change.path);
  }
}

// A file in place of a folder comes as a removal and an addition; the later one is what remains.
void CheckFiles(const std::vector<FileChange>& changes, const FileReader& files, Lines& lines) {
  for (std::size_t i = 0; i < changes.size(); ++i) {
    const bool isReplaced =
        i + 1 < changes.size() && CompareNames(changes[i].path, changes[i + 1].path) == 0;
    if (!isReplaced) CheckFile(changes[i], files, lines);
  }
}

void CheckKey(const KeyChange& change, const RegistryReader& registry, Lines& lines) {
  const bool wanted = change.change != Change::kRemoved;
  if (registry.CanOpenKey(change.hive, change.path) == wanted) return;
  lines.push_back(L"Not as it was to become: " + FullKeyPath(change.hive, change.path));
}

// The key's value of that name, in the spelling that was asked for.
std::optional<RegistryValue> ValueNow(const ValueChange& change, const RegistryReader& registry) {
  for (RegistryValue& value :
       registry.Values(change.hive, change.key).value_or(std::vector<RegistryValue>())) {
    if (CompareNames(value.name, change.name) != 0) continue;
    value.name = change.after ? change.after->name : change.name;
    return value;
  }
  return std::nullopt;
}

void CheckValue(const ValueChange& change, const RegistryReader& registry, Lines& lines) {
  if (ValueNow(change, registry) == change.after) return;
  lines.push_back(L"Not as it was to become: " + FullKeyPath(change.hive, change.key) +
                  L", value " + (change.name.empty() ? L"(default)" : change.name));
}

}  // namespace

std::vector<std::wstring> UnfulfilledChanges(const MachineChanges& foreseen,
                                             const Machine& machine) {
  Lines lines;
  for (const auto* files : {&foreseen.files, &foreseen.rewrittenFiles}) {
    CheckFiles(*files, machine.files, lines);
  }
  for (const KeyChange& change : foreseen.keys) CheckKey(change, machine.registry, lines);
  for (const auto* values : {&foreseen.values, &foreseen.rewrittenValues}) {
    for (const ValueChange& change : *values) CheckValue(change, machine.registry, lines);
  }
  return lines;
}

std::size_t CountForeseen(const MachineChanges& foreseen) {
  return foreseen.files.size() + foreseen.rewrittenFiles.size() + foreseen.keys.size() +
         foreseen.values.size() + foreseen.rewrittenValues.size();
}

}  // namespace carrovan
