#include "package/drafting_import.h"

#include "platform/path_text.h"
#include "platform/text.h"

namespace carrovan {
namespace {

bool IsMenuOrShortcutFile(const std::wstring& name) {
  return EndsWithIgnoringAsciiCase(name, L".UIK") || EndsWithIgnoringAsciiCase(name, L".ACC");
}

void CopyOverNamesake(FileSystem& files, const std::wstring& source,
                      const std::wstring& destinationFolder, const std::wstring& target) {
  if (!files.Exists(target)) return;
  static_cast<void>(files.CreateFolder(destinationFolder));
  if (files.RemoveFile(target) != kSystemOk) return;
  static_cast<void>(files.CopyOver(source, target));
}

// The same path below the other of two folders; nothing when the path is not below the first.
std::optional<std::wstring> Rebased(const std::wstring& path, const std::wstring& from,
                                    const std::wstring& to) {
  if (!path.starts_with(from + L"\\")) return std::nullopt;
  return to + path.substr(from.size());
}

struct FolderPair {
  std::wstring target;
  std::wstring package;
};

// Local first, then Roaming when the system can tell where that is.
std::vector<FolderPair> DraftingFolders(const ImportRun& run) {
  const std::wstring& staging = run.context.stagingFolder;
  std::vector<FolderPair> pairs = {{run.package.draftingFolder, run.context.stagingLocalFolder}};
  const auto local = run.machine.folders.LocalAppData();
  const auto roaming = run.machine.folders.RoamingAppData();
  if (!local || !roaming) {
    run.report.problems.push_back(L"The Roaming half of the 2D drafting settings cannot be told");
    return pairs;
  }
  const auto target = Rebased(run.package.draftingFolder, *local, *roaming);
  const auto package =
      Rebased(run.context.stagingLocalFolder, staging + L"Local", staging + L"Roaming");
  if (target && package) pairs.push_back({*target, *package});
  return pairs;
}

}  // namespace

void CopyProductFolderTree(FileSystem& files, const std::wstring& source,
                           const std::wstring& destination, bool recursive, bool sameRelease) {
  const std::wstring from = WithoutTrailingBackslashes(source);
  const std::wstring to = WithoutTrailingBackslashes(destination);
  if (files.IsLink(from) || files.IsLink(to)) return;
  for (const FolderEntry& entry : files.ListFolder(from)) {
    const std::wstring path = from + L"\\" + entry.name;
    const std::wstring target = to + L"\\" + entry.name;
    if (entry.isLink) continue;
    if (entry.isFolder) {
      if (recursive) CopyProductFolderTree(files, path, target, recursive, sameRelease);
    } else if (!sameRelease && IsContentFile(entry) && IsMenuOrShortcutFile(entry.name)) {
      CopyOverNamesake(files, path, to, target);
    }
  }
}

void ReplaceDraftingFolders(const ImportRun& run) {
  const bool sameRelease = run.context.selectedVersion == run.package.releaseVersion;
  for (const FolderPair& folders : DraftingFolders(run)) {
    CopyProductFolderTree(run.machine.files, folders.package, folders.target, true, sameRelease);
    WipeOrReport(run.machine.files, folders.target, run.report);
  }
}

void DropDraftingFolders(const ImportRun& run) {
  for (const FolderPair& folders : DraftingFolders(run)) {
    WipeOrReport(run.machine.files, folders.package, run.report);
  }
}

}  // namespace carrovan
