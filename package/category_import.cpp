#include "package/category_import.h"

#include <algorithm>

#include "environment/string_table.h"
#include "merge/folder_merge.h"
#include "merge/shortcut_merge.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

const std::wstring kCustomization = L"\\Customization";

// The package's folder of a language after a merge that broke off holds neither side whole.
void DropUnmergedCustomization(const ImportRun& run, const std::wstring& folder) {
  for (const wchar_t* suffix : {L"", L"_merged_temp", L"_backup"}) {
    WipeOrReport(*run.machine.files, folder + suffix, run.report);
  }
}

// What is merged in the package's folder is laid over the profile.
void NoteMerged(const ImportRun& run, const std::wstring& folder,
                const std::vector<std::wstring>& names) {
  if (!folder.starts_with(run.context.stagingFolder)) return;
  const std::wstring target =
      run.package.applicationDataRoot + folder.substr(run.context.stagingFolder.size());
  for (const std::wstring& name : names) run.report.merged.push_back(target + L"\\" + name);
}

bool MergeLanguage(const ImportRun& run, const std::wstring& oldFolder,
                   const std::wstring& newFolder) {
  try {
    std::vector<std::wstring> merged;
    MergeAndSyncFolders(oldFolder, newFolder, {*run.machine.files, run.dom, run.log, &merged});
    NoteMerged(run, oldFolder, merged);
    return true;
  } catch (const FileSystemError& error) {
    run.report.problems.push_back(L"Not merged: " + error.Description());
    return false;
  }
}

// Where a merge breaks off, the target's folder of that language stays as it is.
void MergeInterfaceLayout(const ImportRun& run) {
  std::vector<std::wstring> replaced;
  for (const std::wstring& language : run.context.installLanguages) {
    const std::wstring below = L"\\" + language + kCustomization;
    const std::wstring oldFolder = run.package.roamingFolder + below;
    const std::wstring newFolder = run.context.roamingRoot + below;
    if (MergeLanguage(run, oldFolder, newFolder)) {
      replaced.push_back(newFolder);
    } else {
      DropUnmergedCustomization(run, oldFolder);
    }
  }
  for (const std::wstring& folder : replaced) WipeOrReport(*run.machine.files, folder, run.report);
}

bool IsCustomizationFolder(const FileReader& files, const std::wstring& folder) {
  for (const FolderEntry& entry : ListFolder(files, folder)) {
    if (IsContentFile(entry) && EndsWithIgnoringAsciiCase(entry.name, L".xml")) return true;
  }
  return false;
}

// The package is edited and then laid over the profile, so the target's shortcuts are the old side.
void MergeShortcuts(const ImportRun& run) {
  const FileSystem& files = *run.machine.files;
  std::wstring target = run.context.localRoot + kCustomization;
  if (!IsCustomizationFolder(files, target)) target = run.context.defaultCustomizationFolder;
  const std::wstring folder = run.package.localFolder + kCustomization;
  std::vector<std::wstring> merged;
  MergeShortcutFolders(target, folder, run.package.product + run.package.targetInternalVersion,
                       *run.machine.files, run.dom, &merged);
  NoteMerged(run, folder, merged);
}

bool HoldsAnything(const FileReader& files, const std::wstring& folder) {
  for (const FolderEntry& entry : ListFolder(files, folder)) {
    if (!entry.isFolder || entry.isLink) return true;
    if (HoldsAnything(files, folder + L"\\" + entry.name)) return true;
  }
  return false;
}

struct FolderPair {
  std::wstring target;
  std::wstring package;
};

// The same path below the other of two folders; nothing when the path is not below the first.
std::optional<std::wstring> Rebased(const std::wstring& path, const std::wstring& from,
                                    const std::wstring& to) {
  if (!path.starts_with(from + L"\\")) return std::nullopt;
  return to + path.substr(from.size());
}

// Local first, then Roaming when the system knows where that is.
std::vector<FolderPair> DraftingFolders(const ImportRun& run) {
  const std::wstring& staging = run.context.stagingFolder;
  std::vector<FolderPair> pairs = {{run.package.draftingFolder, run.context.stagingLocalFolder}};
  const auto local = run.machine.folders->LocalAppData();
  const auto roaming = run.machine.folders->RoamingAppData();
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

// A package may mark a category of which its user had nothing: what the target has goes all the
// same, and its owner is to know.
void NoteIfEmptied(const ImportRun& run, SettingCategory category,
                   const std::vector<FolderPair>& folders) {
  const auto holds = [&](std::wstring FolderPair::*side) {
    return std::ranges::any_of(folders, [&](const FolderPair& pair) {
      return HoldsAnything(*run.machine.files, pair.*side);
    });
  };
  if (!holds(&FolderPair::package) && holds(&FolderPair::target)) {
    run.report.emptied.insert(category);
  }
}

// What the target has below one of its roots goes, in every language; the package's own takes its
// place.
void ReplaceInEach(const ImportRun& run, const CategoryRecord& record,
                   const std::wstring& targetRoot, const std::wstring& packageRoot) {
  const std::wstring subfolder(record.subfolder);
  std::vector<FolderPair> folders;
  for (const std::wstring& language : run.context.installLanguages) {
    const std::wstring below = L"\\" + language + subfolder;
    folders.push_back({targetRoot + below, packageRoot + below});
  }
  NoteIfEmptied(run, record.category, folders);
  RemoveSubfolderInEach(run, targetRoot, subfolder);
}

void TakeIn(const ImportRun& run, const CategoryRecord& record) {
  switch (record.category) {
    case SettingCategory::InterfaceLayout:
      return MergeInterfaceLayout(run);
    case SettingCategory::ShortcutKey:
      return MergeShortcuts(run);
    default:
      break;
  }
  switch (record.storage) {
    case CategoryStorage::kRoamingLanguage:
      return ReplaceInEach(run, record, run.context.roamingRoot, run.package.roamingFolder);
    case CategoryStorage::kLocalLanguage:
      return ReplaceInEach(run, record, run.context.localRoot, run.package.localFolder);
    case CategoryStorage::kDraftFolder:
      return ReplaceDraftingFolders(run);
    default:
      return;  // registry files are imported after the walk
  }
}

// Values that would not be imported anyway.
void LeaveOutRegistryFolder(const ImportRun& run, const std::wstring& name) {
  WipeOrReport(*run.machine.files, run.context.stagingFolder + name, run.report);
  const auto isIn = [&name](const auto& found) { return found.file.starts_with(name + L"\\"); };
  std::erase_if(run.report.dropped, isIn);
  std::erase_if(run.report.paths, isIn);
}

void LeaveOut(const ImportRun& run, const CategoryRecord& record) {
  const std::wstring subfolder(record.subfolder);
  FileSystem& files = *run.machine.files;
  switch (record.storage) {
    case CategoryStorage::kOptionKeys:
      return LeaveOutRegistryFolder(run, L"Options");
    case CategoryStorage::kWholeKey:
      return LeaveOutRegistryFolder(run, L"Register");
    case CategoryStorage::kRoamingLanguage:
      return RemoveSubfolderInEach(run, run.package.roamingFolder, subfolder);
    case CategoryStorage::kLocalLanguage:
      return RemoveSubfolderInEach(run, run.package.localFolder, subfolder);
    case CategoryStorage::kLocalSingle:
      return WipeOrReport(files, run.package.localFolder + subfolder, run.report);
    case CategoryStorage::kDraftFolder:
      return DropDraftingFolders(run);
  }
}

}  // namespace

void ApplyCategory(const ImportRun& run, SettingCategory category, bool ticked) {
  const CategoryRecord* record = FindCategory(static_cast<int>(category));
  if (record == nullptr) return;
  if (ticked) {
    TakeIn(run, *record);
  } else {
    LeaveOut(run, *record);
  }
}

void RemoveSubfolderInEach(const ImportRun& run, const std::wstring& root,
                           const std::wstring& subfolder) {
  for (const std::wstring& language : run.context.installLanguages) {
    WipeOrReport(*run.machine.files, root + L"\\" + language + subfolder, run.report);
  }
}

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

}  // namespace

void CopyProductFolderTree(FileSystem& files, const std::wstring& source,
                           const std::wstring& destination, bool recursive, bool sameRelease) {
  const std::wstring from = WithoutTrailingBackslashes(source);
  const std::wstring to = WithoutTrailingBackslashes(destination);
  if (files.IsLink(from) || files.IsLink(to)) return;
  for (const FolderEntry& entry : ListFolder(files, from)) {
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
  const std::vector<FolderPair> pairs = DraftingFolders(run);
  NoteIfEmptied(run, SettingCategory::Draft2dSettings, pairs);
  for (const FolderPair& folders : pairs) {
    CopyProductFolderTree(*run.machine.files, folders.package, folders.target, true, sameRelease);
    WipeOrReport(*run.machine.files, folders.target, run.report);
  }
}

void DropDraftingFolders(const ImportRun& run) {
  for (const FolderPair& folders : DraftingFolders(run)) {
    WipeOrReport(*run.machine.files, folders.package, run.report);
  }
}

}  // namespace carrovan
