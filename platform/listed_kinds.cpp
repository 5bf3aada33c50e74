#include "platform/listed_kinds.h"

#include <vector>

#include "text/path_text.h"

namespace carrovan {

FileKind KindOf(const FolderEntry& entry) {
  if (entry.isLink) return FileKind::kLink;
  return entry.isFolder ? FileKind::kFolder : FileKind::kFile;
}

FileKind ListedKinds::At(const std::wstring& path) {
  const std::wstring parent = RemoveFileSpec(path);
  const std::wstring name = FileNameOf(path);
  if (parent.empty() || parent == path || name.empty()) return KindAt(files_, path);
  const Folder& folder = List(parent);
  if (!folder.isKnown) return KindAt(files_, path);
  const auto found = folder.kinds.find(name);
  return found == folder.kinds.end() ? FileKind::kAbsent : found->second;
}

const ListedKinds::Folder& ListedKinds::List(const std::wstring& folder) {
  const auto [place, added] = folders_.try_emplace(folder);
  if (!added) return place->second;
  std::vector<FolderEntry> entries;
  const SystemCode code = files_.ReadFolder(folder, entries);
  place->second.isKnown = code == kSystemOk || code == kPathNotFound || code == kFileNotFound;
  for (const FolderEntry& entry : entries) place->second.kinds.emplace(entry.name, KindOf(entry));
  return place->second;
}

}  // namespace carrovan
