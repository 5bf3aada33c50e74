#include "merge/folder_merge.h"

#include <utility>

#include "merge/xml_merge.h"
#include "platform/file_operations.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {

bool UnitOrder::operator()(const std::wstring& a, const std::wstring& b) const {
  return ToUtf16(a) < ToUtf16(b);
}

bool IsXmlFile(const FolderEntry& entry) {
  constexpr std::wstring_view kExtension = L".xml";
  return IsContentFile(entry) && entry.name.size() > kExtension.size() &&
         entry.name.ends_with(kExtension);
}

FileNameSet ListXmlFileNames(const FileReader& files, const std::wstring& folder) {
  if (!files.IsFolder(folder)) return {};
  FileNameSet names;
  for (const FolderEntry& entry : EntriesOf(files, folder)) {
    if (IsXmlFile(entry)) names.insert(entry.name);
  }
  return names;
}

std::vector<FolderEntry> EntriesOf(const FileReader& files, const std::wstring& folder) {
  std::vector<FolderEntry> entries;
  const SystemCode code = files.ReadFolder(folder, entries);
  if (code != kSystemOk) throw FileSystemError(code, folder);
  return entries;
}

std::wstring JoinPath(const std::wstring& folder, const std::wstring& name) {
  return WithTrailingBackslash(folder) + name;
}

namespace {

class FolderMerge {
 public:
  FolderMerge(const std::wstring& oldFolder, const std::wstring& newFolder,
              const FolderMergePorts& ports)
      : old_(oldFolder),
        new_(newFolder),
        working_(oldFolder + L"_merged_temp"),
        backup_(oldFolder + L"_backup"),
        files_(ports.files),
        dom_(ports.dom),
        log_(ports.log),
        mergedNames_(ports.merged) {}

  bool Run() {
    if (!Validate(L"Old", old_) || !Validate(L"New", new_)) return false;
    ListBothFolders();
    MakeFresh(working_);
    MergeOldFiles();
    CopyNewFiles();
    IdentifyObsoleteFiles();
    CreateBackup();
    CleanOldFolder();
    UpdateOldFolder();
    Discard(working_);
    Summarize();
    return merged_ > 0 || copied_ > 0;
  }

 private:
  bool Validate(const std::wstring& which, const std::wstring& folder) {
    if (files_.IsFolder(folder)) return true;
    log_.WriteLine(which + L" folder does not exist or is not a directory: " + folder);
    return false;
  }

  void ListBothFolders() {
    oldNames_ = ListXmlFileNames(files_, old_);
    newNames_ = ListXmlFileNames(files_, new_);
    log_.WriteLine(L"Old folder contains " + std::to_wstring(oldNames_.size()) + L" XML files");
    log_.WriteLine(L"New folder contains " + std::to_wstring(newNames_.size()) + L" XML files");
  }

  void MergeOldFiles() {
    log_.WriteLine(L"\n=== Merging common files ===");
    for (const std::wstring& name : oldNames_) {
      if (newNames_.contains(name)) {
        MergeCommonFile(name);
      } else {
        KeepOldOnlyFile(name);
      }
    }
  }

  void MergeCommonFile(const std::wstring& name) {
    ++common_;
    log_.WriteLine(L"Merging: " + name);
    const std::wstring newPath = JoinPath(new_, name);
    const std::wstring workingPath = JoinPath(working_, name);
    if (MergeXmlFiles(JoinPath(old_, name), newPath, workingPath, dom_, log_)) {
      ++merged_;
      if (mergedNames_ != nullptr) mergedNames_->push_back(name);
      log_.WriteLine(L"Successfully merged: " + name);
    } else {
      log_.WriteLine(L"Failed to merge, copying new version: " + name);
      Copy(newPath, workingPath);
    }
  }

  void KeepOldOnlyFile(const std::wstring& name) {
    log_.WriteLine(L"did find the old file, copying new version: " + name);
    const std::wstring oldPath = JoinPath(old_, name);
    // What lies behind a link is not this folder's own.
    if (!files_.IsLink(new_)) Copy(oldPath, JoinPath(new_, name));
    Copy(oldPath, JoinPath(working_, name));
    newNames_.insert(name);
  }

  void CopyNewFiles() {
    log_.WriteLine(L"\n=== Copying new files ===");
    for (const std::wstring& name : newNames_) {
      if (oldNames_.contains(name)) continue;
      if (Copy(JoinPath(new_, name), JoinPath(working_, name))) {
        ++copied_;
        log_.WriteLine(L"Copied new file: " + name);
      } else {
        log_.WriteLine(L"Failed to copy: " + name);
      }
    }
  }

  // Every name of the old folder is among the new ones by now, so none is obsolete.
  void IdentifyObsoleteFiles() {
    log_.WriteLine(L"\n=== Identifying obsolete files ===");
    for (const std::wstring& name : oldNames_) {
      if (newNames_.contains(name)) continue;
      ++obsolete_;
      log_.WriteLine(L"Marked for deletion: " + name);
    }
  }

  void CreateBackup() {
    log_.WriteLine(L"\n=== Creating backup ===");
    MakeFresh(backup_);
    for (const FolderEntry& entry : EntriesOf(files_, old_)) {
      if (IsXmlFile(entry)) Copy(JoinPath(old_, entry.name), JoinPath(backup_, entry.name));
    }
    log_.WriteLine(L"Backup created at: " + backup_);
  }

  void CleanOldFolder() {
    log_.WriteLine(L"\n=== Cleaning old folder ===");
    for (const FolderEntry& entry : EntriesOf(files_, old_)) {
      if (!IsXmlFile(entry)) continue;
      const std::wstring path = JoinPath(old_, entry.name);
      Require(files_.RemoveFile(path), path);
    }
  }

  void UpdateOldFolder() {
    log_.WriteLine(L"\n=== Updating old folder ===");
    for (const FolderEntry& entry : EntriesOf(files_, working_)) {
      if (entry.isFolder) continue;
      const bool copied = Copy(JoinPath(working_, entry.name), JoinPath(old_, entry.name));
      log_.WriteLine((copied ? L"Updated: " : L"Failed to update: ") + entry.name);
    }
  }

  void Summarize() {
    log_.WriteLine(L"\n=== Merge and Sync Summary ===");
    log_.WriteLine(L"Successfully merged: " + std::to_wstring(merged_) + L" out of " +
                   std::to_wstring(common_) + L" common files");
    log_.WriteLine(L"New files copied: " + std::to_wstring(copied_));
    log_.WriteLine(L"Obsolete files deleted: " + std::to_wstring(obsolete_));
    log_.WriteLine(L"Backup location: " + backup_);
    log_.WriteLine(L"Final file count in old folder: " + std::to_wstring(merged_ + copied_) +
                   L" files");
  }

  static void Require(SystemCode code, const std::wstring& path) {
    if (code != kSystemOk) throw FileSystemError(code, path);
  }

  // False when the system says that it left the copy undone.
  bool Copy(const std::wstring& source, const std::wstring& target) {
    const SystemCode code = files_.CopyOver(source, target);
    if (code != kCopySkipped) Require(code, target);
    return code == kSystemOk;
  }

  void Discard(const std::wstring& folder) {
    const FileKind kind = KindAt(files_, folder);
    if (kind == FileKind::kAbsent) return;
    if (kind == FileKind::kFile || (kind == FileKind::kLink && !files_.IsFolder(folder))) {
      return Require(files_.RemoveFile(folder), folder);
    }
    if (!WipeFolder(files_, folder)) throw FileSystemError(kFolderNotEmpty, folder);
  }

  void MakeFresh(const std::wstring& folder) {
    Discard(folder);
    // An emptied folder that somebody holds open cannot be removed, and serves as well.
    if (!files_.IsFolder(folder)) Require(files_.CreateFolder(folder), folder);
  }

  const std::wstring old_;
  const std::wstring new_;
  const std::wstring working_;
  const std::wstring backup_;
  FileSystem& files_;
  XmlDom& dom_;
  LineLog& log_;
  std::vector<std::wstring>* mergedNames_;
  FileNameSet oldNames_;
  FileNameSet newNames_;
  int merged_ = 0;
  int common_ = 0;
  int copied_ = 0;
  int obsolete_ = 0;
};

}  // namespace

bool MergeAndSyncFolders(const std::wstring& oldFolder, const std::wstring& newFolder,
                         const FolderMergePorts& ports) {
  return FolderMerge(oldFolder, newFolder, ports).Run();
}

}  // namespace carrovan
