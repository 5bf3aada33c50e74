#include "tests/support/machine_snapshot.h"

#include <algorithm>

#include "registry_text/registry_key.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr RegistryHive kHives[] = {RegistryHive::kCurrentUser, RegistryHive::kLocalMachine};

void TakeFolder(const MemoryFiles& files, const std::wstring& folder, MachineSnapshot& snapshot) {
  for (const FolderEntry& entry : ListFolder(files, folder)) {
    const std::wstring path = folder + L"\\" + entry.name;
    snapshot.files[FoldedName(path)] = {path, entry.isFolder, files.IsReadOnly(path),
                                        entry.isFolder ? "" : files.Bytes(path)};
    if (entry.isFolder) TakeFolder(files, path, snapshot);
  }
}

void TakeKey(RegistryHive hive, const std::wstring& path, const RegistryKey& key,
             MachineSnapshot& snapshot) {
  const std::u16string folded = FoldedName(path);
  if (!path.empty()) snapshot.keys[{hive, folded}] = path;
  for (const RegistryValue* value : key.AllValues()) {
    snapshot.values[{hive, folded + u'\0' + FoldedName(value->name)}] = {path, *value};
  }
  for (const auto& [name, subkey] : key.AllSubkeys()) {
    TakeKey(hive, path.empty() ? name : path + L"\\" + name, *subkey, snapshot);
  }
}

// Calls `report` with each place's content before and after, null for none.
template <typename Map, typename Report>
void Compare(const Map& before, const Map& after, const Report& report) {
  constexpr const typename Map::mapped_type* kNone = nullptr;
  for (const auto& [place, content] : before) {
    const auto is = after.find(place);
    report(place, &content, is == after.end() ? kNone : &is->second);
  }
  for (const auto& [place, content] : after) {
    if (!before.contains(place)) report(place, kNone, &content);
  }
}

FileImage ImageOf(const MachineSnapshot::File& file) {
  return file.isFolder ? FileImage{FileKind::kFolder} : ImageOfBytes(file.bytes);
}

void TellFile(const MachineSnapshot::File* was, const MachineSnapshot::File* is,
              std::vector<FileChange>& changes) {
  const FileImage before = was == nullptr ? FileImage() : ImageOf(*was);
  const FileImage after = is == nullptr ? FileImage() : ImageOf(*is);
  if (before == after) return;
  if (was != nullptr && is != nullptr && was->isFolder == is->isFolder) {
    changes.push_back({is->path, Change::kReplaced, false, before, after});
    return;
  }
  if (was != nullptr) changes.push_back({was->path, Change::kRemoved, was->isFolder, before, {}});
  if (is != nullptr) changes.push_back({is->path, Change::kAdded, is->isFolder, {}, after});
}

std::string LineOf(const std::optional<RegistryValue>& value) {
  if (!value) return "none";
  std::string line = std::to_string(value->type) + ":";
  for (const std::uint8_t byte : value->data) line += std::to_string(byte) + ",";
  return line;
}

std::string Line(const FileChange& change) {
  constexpr const char* kWords[] = {"added ", "replaced ", "removed "};
  // What is removed need not be read.
  const bool isRead = change.change != Change::kRemoved;
  const auto image = [isRead](const FileImage& of) {
    return " " + std::to_string(of.sizeBytes) + "/" + std::to_string(isRead ? of.crc32 : 0);
  };
  return kWords[static_cast<int>(change.change)] + WithoutGuids(change.path) +
         (change.isFolder ? "\\" : "") + image(change.before) + image(change.after);
}

}  // namespace

MachineSnapshot TakeSnapshot(const MemoryMachine& machine) {
  MachineSnapshot snapshot;
  TakeFolder(machine.files, L"C:", snapshot);
  for (const RegistryHive hive : kHives) {
    TakeKey(hive, L"", machine.registry.Root(hive), snapshot);
  }
  return snapshot;
}

MachineChanges DifferenceOf(const MachineSnapshot& before, const MachineSnapshot& after) {
  MachineChanges changes;
  Compare(before.files, after.files,
          [&](const auto&, const auto* was, const auto* is) { TellFile(was, is, changes.files); });
  Compare(before.keys, after.keys, [&](const auto& place, const auto* was, const auto* is) {
    if (was == nullptr) changes.keys.push_back({place.first, *is, Change::kAdded});
    if (is == nullptr) changes.keys.push_back({place.first, *was, Change::kRemoved});
  });
  Compare(before.values, after.values, [&](const auto& place, const auto* was, const auto* is) {
    if (was && is && was->value.type == is->value.type && was->value.data == is->value.data) return;
    const auto& known = was != nullptr ? *was : *is;
    changes.values.push_back({place.first, known.key, known.value.name,
                              was ? std::optional(was->value) : std::nullopt,
                              is ? std::optional(is->value) : std::nullopt});
  });
  return changes;
}

std::vector<std::string> LinesOf(const MachineChanges& changes) {
  std::vector<std::string> lines;
  for (const FileChange& change : changes.files) lines.push_back(Line(change));
  for (const KeyChange& change : changes.keys) {
    lines.push_back((change.change == Change::kAdded ? "key added " : "key removed ") +
                    ToUtf8(RootName(change.hive) + L"\\" + change.path));
  }
  for (const ValueChange& change : changes.values) {
    lines.push_back("value " +
                    ToUtf8(RootName(change.hive) + L"\\" + change.key + L" | " + change.name) +
                    " " + LineOf(change.before) + " -> " + LineOf(change.after));
  }
  // Spelling is the system's, the order of the lines shall not depend on it.
  std::sort(lines.begin(), lines.end());
  return lines;
}

std::string WithoutGuids(const std::wstring& text) {
  std::string plain = ToUtf8(text);
  constexpr std::string_view kMark = "00000000-0000-4000-8000-";
  for (std::size_t at = plain.find(kMark); at != std::string::npos;
       at = plain.find(kMark, at + 1)) {
    const std::size_t digits = at + kMark.size();
    std::size_t end = digits;
    while (end < plain.size() && plain[end] >= '0' && plain[end] <= '9') ++end;
    plain.erase(digits, end - digits);
  }
  return plain;
}

}  // namespace carrovan
