#include "preview/machine_changes.h"

#include <algorithm>
#include <map>
#include <set>

#include "platform/listed_kinds.h"
#include "registry_text/registry_key.h"
#include "text/text.h"

namespace carrovan {
namespace {

using Entries = std::map<std::u16string, FolderEntry>;  // by folded name

Entries EntriesOf(const FileReader& files, const std::wstring& folder) {
  Entries entries;
  for (FolderEntry& entry : ListFolder(files, folder)) {
    std::u16string folded = FoldedName(entry.name);
    entries.emplace(std::move(folded), std::move(entry));
  }
  return entries;
}

const FolderEntry* Find(const Entries& entries, const std::u16string& name) {
  const auto found = entries.find(name);
  return found == entries.end() ? nullptr : &found->second;
}

const OverlayNode* Find(const OverlayNode* folder, const std::u16string& name) {
  if (folder == nullptr) return nullptr;
  const auto found = folder->below.find(name);
  return found == folder->below.end() ? nullptr : found->second.get();
}

bool IsPlainFolder(const FolderEntry& entry) { return entry.isFolder && !entry.isLink; }

// The spelling of a path may differ before and after. `real` is the folder that shows through,
// `node` null when only that decides.
struct Folder {
  std::wstring before;
  std::wstring after;
  const OverlayNode* node = nullptr;
  std::wstring real;
};

class FileComparison {
 public:
  FileComparison(const FileReader& overlay, const FileReader& machine, MachineChanges& changes)
      : overlay_(overlay), machine_(machine), changes_(changes) {}

  // A folder that is there before and after.
  void CompareFolder(const Folder& folder) {
    const bool showsItself = IsSamePath(folder.before, folder.real);
    if (folder.node == nullptr && showsItself) return;
    const Entries before = EntriesOf(machine_, folder.before);
    const Entries after = EntriesOf(overlay_, folder.after);
    for (const std::u16string& name : NamesToCompare(folder.node, showsItself, before, after)) {
      const OverlayNode* const node = Find(folder.node, name);
      if (node == nullptr || !node->isHidden) {
        Compare(folder, node, Find(before, name), Find(after, name));
      }
    }
  }

 private:
  static std::set<std::u16string> NamesToCompare(const OverlayNode* node, bool showsItself,
                                                 const Entries& before, const Entries& after) {
    std::set<std::u16string> names;
    if (showsItself) {
      for (const auto& [name, child] : node->below) names.insert(name);
      return names;
    }
    for (const auto& [name, entry] : before) names.insert(name);
    for (const auto& [name, entry] : after) names.insert(name);
    return names;
  }

  void Compare(const Folder& folder, const OverlayNode* node, const FolderEntry* before,
               const FolderEntry* after) {
    const std::wstring was = before == nullptr ? L"" : JoinNames(folder.before, before->name);
    const std::wstring is = after == nullptr ? L"" : JoinNames(folder.after, after->name);
    if (before != nullptr && after != nullptr && IsPlainFolder(*before) && IsPlainFolder(*after)) {
      const std::wstring shown = folder.real.empty() ? L"" : JoinNames(folder.real, before->name);
      return CompareFolder({was, is, node, node != nullptr ? node->real : shown});
    }
    if (before != nullptr && after == nullptr) {
      return Report(Change::kRemoved, was, *before, ImageOfRemoved(was, *before));
    }
    const FileImage imageBefore = ImageOf(machine_, was, before);
    const FileImage imageAfter = ImageOf(overlay_, is, after);
    if (imageBefore == imageAfter) {
      const std::wstring& path = is.empty() ? was : is;
      changes_.rewrittenFiles.push_back({path, Change::kReplaced, false, imageBefore, imageAfter});
      return;
    }
    if (imageBefore.kind == FileKind::kFile && imageAfter.kind == FileKind::kFile) {
      changes_.files.push_back({is, Change::kReplaced, false, imageBefore, imageAfter});
      return;
    }
    if (before != nullptr) Report(Change::kRemoved, was, *before, imageBefore);
    if (after != nullptr) Report(Change::kAdded, is, *after, imageAfter);
  }

  static FileImage ImageOf(const FileReader& files, const std::wstring& path,
                           const FolderEntry* entry) {
    FileImage image;
    if (entry != nullptr && ReadFileImage(files, path, KindOf(*entry), image) != kSystemOk) {
      image.kind = FileKind::kFile;  // one that cannot be read
    }
    return image;
  }

  // Of what is gone nothing is compared, so that its content is not read.
  FileImage ImageOfRemoved(const std::wstring& path, const FolderEntry& entry) const {
    FileImage image{KindOf(entry)};
    if (image.kind == FileKind::kFile) image.sizeBytes = machine_.FileBytes(path);
    return image;
  }

  // With everything below.
  void Report(Change change, const std::wstring& path, const FolderEntry& entry,
              const FileImage& image) {
    const bool added = change == Change::kAdded;
    const FileImage absent;
    changes_.files.push_back(
        {path, change, entry.isFolder, added ? absent : image, added ? image : absent});
    if (!IsPlainFolder(entry)) return;
    const FileReader& files = added ? overlay_ : machine_;
    for (const FolderEntry& below : ListFolder(files, path)) {
      const std::wstring belowPath = JoinNames(path, below.name);
      Report(change, belowPath, below,
             added ? ImageOf(files, belowPath, &below) : ImageOfRemoved(belowPath, below));
    }
  }

  const FileReader& overlay_;
  const FileReader& machine_;
  MachineChanges& changes_;
};

}  // namespace

void AddFileChanges(const OverlayTree& tree, const FileReader& overlay, const FileReader& machine,
                    MachineChanges& changes) {
  FileComparison comparison(overlay, machine, changes);
  for (const auto& [name, root] : tree.Roots()) {
    comparison.CompareFolder({root->real, root->real, root.get(), root->real});
  }
  std::ranges::stable_sort(changes.files, [](const FileChange& a, const FileChange& b) {
    return CompareNames(a.path, b.path) < 0;
  });
}

namespace {

constexpr RegistryHive kHives[] = {RegistryHive::kCurrentUser, RegistryHive::kLocalMachine};

using Names = std::map<std::u16string, std::wstring>;  // folded, and as they are spelled
using ValuesByName = std::map<std::u16string, RegistryValue>;

Names SubkeysOf(const RegistryReader& registry, RegistryHive hive, const std::wstring& key) {
  Names names;
  const auto listed = registry.SubkeyNames(hive, key);
  if (!listed) return names;
  for (const std::wstring& name : *listed) names.emplace(FoldedName(name), name);
  return names;
}

ValuesByName ValuesOf(const RegistryReader& registry, RegistryHive hive, const std::wstring& key) {
  ValuesByName values;
  const auto listed = registry.Values(hive, key);
  if (!listed) return values;
  for (const RegistryValue& value : *listed) values.emplace(FoldedName(value.name), value);
  return values;
}

bool IsSameContent(const RegistryValue& a, const RegistryValue& b) {
  return a.type == b.type && a.data == b.data;
}

class KeyComparison {
 public:
  KeyComparison(RegistryHive hive, const RegistryReader& overlay, const RegistryReader& machine,
                MachineChanges& changes)
      : hive_(hive), overlay_(overlay), machine_(machine), changes_(changes) {}

  // A key before and after; only what the overlay changed is looked at.
  // The path may be spelled otherwise than before.
  void CompareKey(const std::wstring& pathBefore, const std::wstring& pathAfter,
                  const OverlayKey& key) {
    if (key.values != nullptr) CompareValues(pathBefore, pathAfter);
    const Names before = SubkeysOf(machine_, hive_, pathBefore);
    const Names after = SubkeysOf(overlay_, hive_, pathAfter);
    std::set<std::u16string> names;
    for (const auto& [name, subkey] : key.below) names.insert(name);
    // A key that was made again shows none of those it had.
    if (!key.showsMachine) {
      for (const auto& [name, spelled] : before) names.insert(name);
    }
    for (const std::u16string& name : names) {
      const auto was = before.find(name);
      const auto is = after.find(name);
      if (was != before.end() && is != after.end()) {
        CompareKey(Below(pathBefore, was->second), Below(pathAfter, is->second),
                   *key.below.at(name));
      } else if (was != before.end()) {
        Report(Change::kRemoved, Below(pathBefore, was->second));
      } else if (is != after.end()) {
        Report(Change::kAdded, Below(pathAfter, is->second));
      }
    }
  }

 private:
  static std::wstring Below(const std::wstring& path, const std::wstring& name) {
    return path.empty() ? name : path + L"\\" + name;
  }

  void CompareValues(const std::wstring& pathBefore, const std::wstring& pathAfter) {
    const ValuesByName before = ValuesOf(machine_, hive_, pathBefore);
    const ValuesByName after = ValuesOf(overlay_, hive_, pathAfter);
    for (const auto& [name, value] : before) {
      const auto is = after.find(name);
      if (is == after.end()) {
        changes_.values.push_back({hive_, pathBefore, value.name, value, std::nullopt});
      } else {
        auto& values =
            IsSameContent(value, is->second) ? changes_.rewrittenValues : changes_.values;
        values.push_back({hive_, pathBefore, value.name, value, is->second});
      }
    }
    for (const auto& [name, value] : after) {
      if (before.contains(name)) continue;
      changes_.values.push_back({hive_, pathAfter, value.name, std::nullopt, value});
    }
  }

  // With everything below.
  void Report(Change change, const std::wstring& path) {
    changes_.keys.push_back({hive_, path, change});
    CompareValues(path, path);
    const RegistryReader& registry = change == Change::kAdded ? overlay_ : machine_;
    for (const auto& [folded, name] : SubkeysOf(registry, hive_, path)) {
      Report(change, Below(path, name));
    }
  }

  RegistryHive hive_;
  const RegistryReader& overlay_;
  const RegistryReader& machine_;
  MachineChanges& changes_;
};

// Negative, zero or positive.
int OrderOfKeys(RegistryHive hiveA, const std::wstring& a, RegistryHive hiveB,
                const std::wstring& b) {
  if (hiveA != hiveB) return hiveA < hiveB ? -1 : 1;
  return CompareNames(a, b);
}

}  // namespace

void AddRegistryChanges(const OverlayRegistry& overlay, const RegistryReader& machine,
                        MachineChanges& changes) {
  for (const RegistryHive hive : kHives) {
    KeyComparison(hive, overlay, machine, changes).CompareKey(L"", L"", overlay.Root(hive));
  }
  std::sort(changes.keys.begin(), changes.keys.end(), [](const KeyChange& a, const KeyChange& b) {
    return OrderOfKeys(a.hive, a.path, b.hive, b.path) < 0;
  });
  std::sort(changes.values.begin(), changes.values.end(),
            [](const ValueChange& a, const ValueChange& b) {
              const int order = OrderOfKeys(a.hive, a.key, b.hive, b.key);
              return order != 0 ? order < 0 : CompareNames(a.name, b.name) < 0;
            });
}

namespace {

using Lines = std::vector<std::wstring>;

void CheckFile(const FileChange& change, const FileReader& files, ListedKinds& kinds,
               Lines& lines) {
  FileImage now;
  const SystemCode code = ReadFileImage(files, change.path, kinds.At(change.path), now);
  if (code != kSystemOk) {
    lines.push_back(L"Cannot be read back: " + change.path + L": " + DescribeSystemCode(code));
  } else if (now != change.after) {
    lines.push_back(L"Not as it was to become: " + change.path);
  }
}

// A file in place of a folder comes as a removal and an addition; the later one is what remains.
void CheckFiles(const std::vector<FileChange>& changes, const FileReader& files, ListedKinds& kinds,
                Lines& lines) {
  for (std::size_t i = 0; i < changes.size(); ++i) {
    const bool isReplaced =
        i + 1 < changes.size() && CompareNames(changes[i].path, changes[i + 1].path) == 0;
    if (!isReplaced) CheckFile(changes[i], files, kinds, lines);
  }
}

void CheckKey(const KeyChange& change, const RegistryReader& registry, Lines& lines) {
  const bool wanted = change.change != Change::kRemoved;
  if (registry.CanOpenKey(change.hive, change.path) == wanted) return;
  lines.push_back(L"Not as it was to become: " + FullKeyPath(change.hive, change.path));
}

// Reads each key once: changes of its values come one after another.
class ValuesNow {
 public:
  explicit ValuesNow(const RegistryReader& registry) : registry_(registry) {}

  // The key's value of that name, in the spelling that was asked for.
  std::optional<RegistryValue> Find(const ValueChange& change) {
    if (change.hive != hive_ || change.key != key_) Read(change.hive, change.key);
    const auto found = values_.find(FoldedName(change.name));
    if (found == values_.end()) return std::nullopt;
    RegistryValue value = found->second;
    value.name = change.after ? change.after->name : change.name;
    return value;
  }

 private:
  void Read(RegistryHive hive, const std::wstring& key) {
    hive_ = hive;
    key_ = key;
    values_ = ValuesOf(registry_, hive, key);
  }

  const RegistryReader& registry_;
  RegistryHive hive_ = RegistryHive::kCurrentUser;
  std::optional<std::wstring> key_;
  ValuesByName values_;
};

void CheckValue(const ValueChange& change, ValuesNow& now, Lines& lines) {
  if (now.Find(change) == change.after) return;
  lines.push_back(L"Not as it was to become: " + FullKeyPath(change.hive, change.key) +
                  L", value " + (change.name.empty() ? L"(default)" : change.name));
}

}  // namespace

std::vector<std::wstring> UnfulfilledChanges(const MachineChanges& foreseen,
                                             const Machine& machine) {
  Lines lines;
  ListedKinds kinds(*machine.files);
  for (const auto* files : {&foreseen.files, &foreseen.rewrittenFiles}) {
    CheckFiles(*files, *machine.files, kinds, lines);
  }
  for (const KeyChange& change : foreseen.keys) CheckKey(change, *machine.registry, lines);
  ValuesNow now(*machine.registry);
  for (const auto* values : {&foreseen.values, &foreseen.rewrittenValues}) {
    for (const ValueChange& change : *values) CheckValue(change, now, lines);
  }
  return lines;
}

std::size_t CountForeseen(const MachineChanges& foreseen) {
  return foreseen.files.size() + foreseen.rewrittenFiles.size() + foreseen.keys.size() +
         foreseen.values.size() + foreseen.rewrittenValues.size();
}

}  // namespace carrovan
