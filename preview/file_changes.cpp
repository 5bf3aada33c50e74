#include <algorithm>
#include <map>
#include <set>

#include "platform/text.h"
#include "preview/machine_changes.h"

namespace carrovan {
namespace {

using Entries = std::map<std::u16string, FolderEntry>;  // by folded name

Entries EntriesOf(const FileReader& files, const std::wstring& folder) {
  Entries entries;
  for (FolderEntry& entry : files.ListFolder(folder)) {
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

class Comparison {
 public:
  Comparison(const FileReader& overlay, const FileReader& machine, MachineChanges& changes)
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
    if (before != nullptr) Tell(Change::kRemoved, was, *before, imageBefore);
    if (after != nullptr) Tell(Change::kAdded, is, *after, imageAfter);
  }

  static FileImage ImageOf(const FileReader& files, const std::wstring& path,
                           const FolderEntry* entry) {
    FileImage image;
    if (entry != nullptr && ReadFileImage(files, path, image) != kSystemOk) {
      image.kind = FileKind::kFile;  // one that cannot be read
    }
    return image;
  }

  // With everything below.
  void Tell(Change change, const std::wstring& path, const FolderEntry& entry,
            const FileImage& image) {
    const bool added = change == Change::kAdded;
    const FileImage absent;
    changes_.files.push_back(
        {path, change, entry.isFolder, added ? absent : image, added ? image : absent});
    if (!IsPlainFolder(entry)) return;
    const FileReader& files = added ? overlay_ : machine_;
    for (const FolderEntry& below : files.ListFolder(path)) {
      const std::wstring belowPath = JoinNames(path, below.name);
      Tell(change, belowPath, below, ImageOf(files, belowPath, &below));
    }
  }

  const FileReader& overlay_;
  const FileReader& machine_;
  MachineChanges& changes_;
};

}  // namespace

void AddFileChanges(const OverlayTree& tree, const FileReader& overlay, const FileReader& machine,
                    MachineChanges& changes) {
  Comparison comparison(overlay, machine, changes);
  for (const auto& [name, root] : tree.Roots()) {
    comparison.CompareFolder({root->real, root->real, root.get(), root->real});
  }
  std::ranges::stable_sort(changes.files, [](const FileChange& a, const FileChange& b) {
    return CompareNames(a.path, b.path) < 0;
  });
}

}  // namespace carrovan
