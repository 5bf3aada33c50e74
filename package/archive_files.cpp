#include "package/archive_files.h"

#include <set>

#include "platform/path_text.h"

namespace carrovan {

ArchiveFiles::ArchiveFiles(ArchiveExaminer& archive) : archive_(archive) {
  for (std::size_t index = 0; const auto item = archive.Item(index); ++index) {
    indexes_.emplace(item->name, index);
  }
}

bool ArchiveFiles::Exists(const std::wstring& path) const {
  return indexes_.contains(path) || IsFolder(path);
}

bool ArchiveFiles::IsFolder(const std::wstring& path) const {
  std::vector<FolderEntry> entries;
  return ReadFolder(path, entries) == kSystemOk;
}

std::vector<FolderEntry> ArchiveFiles::ListFolder(const std::wstring& folder) const {
  std::vector<FolderEntry> entries;
  static_cast<void>(ReadFolder(folder, entries));
  return entries;
}

SystemCode ArchiveFiles::ReadFolder(const std::wstring& folder,
                                    std::vector<FolderEntry>& entries) const {
  const std::wstring start = folder.empty() ? L"" : WithTrailingBackslash(folder);
  std::set<std::wstring, NameLess> folders;
  bool isThere = start.empty() || indexes_.contains(start);
  for (const auto& [name, index] : indexes_) {
    if (name.size() <= start.size()) continue;
    if (CompareNames(name.substr(0, start.size()), start) != 0) continue;
    isThere = true;
    const std::size_t end = name.find(L'\\', start.size());
    std::wstring entry = name.substr(start.size(), end - start.size());
    const bool isFolder = end != std::wstring::npos;
    if (isFolder && !folders.insert(entry).second) continue;
    entries.push_back({std::move(entry), isFolder, false});
  }
  return isThere ? kSystemOk : kPathNotFound;
}

SystemCode ArchiveFiles::ReadBytes(const std::wstring& path, std::string& bytes) const {
  const auto at = indexes_.find(path);
  if (at == indexes_.end()) return kFileNotFound;
  const auto content = archive_.Read(at->second, kLongestFileBytes);
  if (!content) return kInvalidData;
  bytes.assign(content->begin(), content->end());
  return kSystemOk;
}

SystemCode ArchiveFiles::ReadInParts(const std::wstring& path, const TakePart& take) const {
  const auto at = indexes_.find(path);
  if (at == indexes_.end()) return kFileNotFound;
  const auto item = archive_.Item(at->second);
  const std::uint64_t fileBytes = item ? item->sizeBytes : 0;
  bool isWanted = true;
  const ArchiveResult result = archive_.ReadInParts(
      at->second, [&](std::string_view part) { isWanted = isWanted && take(part, fileBytes); });
  return result == ArchiveResult::kDone ? kSystemOk : kInvalidData;
}

SystemCode ArchiveFiles::CreateFolder(const std::wstring&) { return kAccessDenied; }

SystemCode ArchiveFiles::CreateEmptyFile(const std::wstring&) { return kAccessDenied; }

SystemCode ArchiveFiles::RemoveFile(const std::wstring&) { return kAccessDenied; }

SystemCode ArchiveFiles::RemoveFolder(const std::wstring&) { return kAccessDenied; }

SystemCode ArchiveFiles::WriteBytes(const std::wstring&, std::string_view) { return kAccessDenied; }

SystemCode ArchiveFiles::BeginReplacement(const std::wstring&, std::uint64_t,
                                          std::unique_ptr<FileReplacement>&) {
  return kAccessDenied;
}

SystemCode ArchiveFiles::AppendBytes(const std::wstring&, std::string_view) {
  return kAccessDenied;
}

SystemCode ArchiveFiles::HoldFile(const std::wstring&, FileHold) { return kAccessDenied; }

SystemCode ArchiveFiles::CopyOver(const std::wstring&, const std::wstring&) {
  return kAccessDenied;
}

SystemCode ArchiveFiles::MoveTo(const std::wstring&, const std::wstring&) { return kAccessDenied; }

}  // namespace carrovan
