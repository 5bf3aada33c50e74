#include "restore/change_recorder.h"

#include <algorithm>

#include "platform/file_operations.h"
#include "registry_text/registry_key.h"
#include "restore/restore_point.h"
#include "text/path_text.h"

namespace carrovan {

std::wstring SpelledNames::Spell(const std::wstring& parent, const std::wstring& name) {
  if (parent != parent_ || !names_.contains(name)) {
    parent_ = parent;
    names_.clear();
    for (std::wstring& each : list_(parent)) names_.insert(std::move(each));
  }
  const auto spelled = names_.find(name);
  return spelled == names_.end() ? name : *spelled;
}

SpelledNames::List NamesInFolders(const FileReader& files) {
  return [&files](const std::wstring& folder) {
    std::vector<std::wstring> names;
    for (FolderEntry& entry : ListFolder(files, folder)) names.push_back(std::move(entry.name));
    return names;
  };
}

SpelledNames::List NamesInKeys(const RegistryReader& registry, RegistryHive hive) {
  return [&registry, hive](const std::wstring& keyPath) {
    return registry.SubkeyNames(hive, keyPath).value_or(std::vector<std::wstring>());
  };
}

namespace {

// A name that no folder has yet; two runs may begin within one second.
std::wstring FreeId(const FileReader& files, const std::wstring& root, const std::wstring& id) {
  std::wstring free = id;
  for (int i = 2; files.Exists(root + L"\\" + free); ++i) free = id + L"-" + std::to_wstring(i);
  return free;
}

std::wstring ParentKey(const std::wstring& keyPath) {
  const std::size_t separator = keyPath.rfind(L'\\');
  return separator == std::wstring::npos ? std::wstring() : keyPath.substr(0, separator);
}

}  // namespace

OrReason<ChangeRecorder> ChangeRecorder::Begin(const Machine& machine, const PointBegun& about) {
  const auto root = RestoreRoot(*machine.folders);
  if (!root) return {nullptr, L"The user's application-data folder cannot be told"};
  const std::wstring id = FreeId(*machine.files, *root, RestorePointId(machine.clock->Now()));
  std::unique_ptr<ChangeRecorder> recorder(new ChangeRecorder(machine, *root, id));
  SystemCode code = recorder->MakeFolders();
  if (code == kSystemOk) code = recorder->Append(about);
  if (code == kSystemOk) return {std::move(recorder), {}};
  return {nullptr, recorder->Folder() + L": " + DescribeSystemCode(code)};
}

ChangeRecorder::ChangeRecorder(const Machine& machine, std::wstring root, std::wstring id)
    : files_(*machine.files),
      registry_(*machine.registry),
      folders_(*machine.folders),
      root_(TidyPath(root)),
      id_(std::move(id)),
      fileNames_(NamesInFolders(files_)),
      userKeyNames_(NamesInKeys(registry_, RegistryHive::kCurrentUser)),
      machineKeyNames_(NamesInKeys(registry_, RegistryHive::kLocalMachine)) {}

SystemCode ChangeRecorder::MakeFolders() {
  return MakeFolderPath(files_, Folder() + L"\\" + kCopiesFolder);
}

SystemCode ChangeRecorder::Append(const JournalRecord& record) {
  return files_.AppendBytes(Folder() + L"\\" + kJournalName, EncodeRecord(record));
}

void ChangeRecorder::Describe(const PointBegun& about) { static_cast<void>(Append(about)); }

bool ChangeRecorder::IsScratch(const std::wstring& path) const {
  const std::wstring tidy = TidyPath(path);
  return std::ranges::any_of(scratch_,
                             [&](const std::wstring& folder) { return IsAtOrBelow(tidy, folder); });
}

SystemCode ChangeRecorder::FolderMade(const std::wstring& path) {
  const std::wstring tidy = TidyPath(path);
  if (!IsScratchPath(folders_, tidy) || files_.Exists(tidy)) return FileChanges(path);
  return TakeScratch(path);
}

SystemCode ChangeRecorder::TakeScratch(const std::wstring& path) {
  const std::wstring tidy = TidyPath(path);
  if (!IsScratchPath(folders_, tidy)) return kAccessDenied;
  const SystemCode code = Append(ScratchMade{tidy});
  if (code == kSystemOk) scratch_.push_back(tidy);
  return code;
}

SystemCode ChangeRecorder::FileChanges(const std::wstring& path) {
  const std::wstring tidy = TidyPath(path);
  if (IsAtOrBelow(tidy, root_)) return kAccessDenied;
  if (const SystemCode code = NoteMissingParents(tidy); code != kSystemOk) return code;
  return files_.IsLink(tidy) ? TakeLink(tidy) : NoteBefore(tidy);
}

// A change may make the folders above, too.
SystemCode ChangeRecorder::NoteMissingParents(const std::wstring& path) {
  const std::wstring parent = RemoveFileSpec(path);
  if (parent.empty() || parent == path || files_.Exists(parent)) return kSystemOk;
  if (const SystemCode code = NoteMissingParents(parent); code != kSystemOk) return code;
  return notedFiles_.contains(parent) ? kSystemOk : NoteBefore(parent);
}

SystemCode ChangeRecorder::NoteBefore(const std::wstring& path) {
  FileChanging change{AsSpelled(path), std::nullopt, {}, {}};
  if (!files_.Exists(RemoveFileSpec(path) + L"\\" + PartName(0))) change.part = PartName(0);
  if (notedFiles_.contains(path)) return Append(change);

  change.before.emplace();
  SystemCode code = ReadFileImage(files_, path, *change.before);
  if (code == kSystemOk && change.before->kind == FileKind::kFile) code = KeepCopy(path, change);
  if (code == kSystemOk) code = Append(change);
  if (code == kSystemOk) notedFiles_.insert(path);
  return code;
}

std::wstring ChangeRecorder::AsSpelled(const std::wstring& path) {
  const std::wstring parent = RemoveFileSpec(path);
  const std::wstring name = FileNameOf(path);
  if (parent == path || name.empty()) return path;
  return parent + L"\\" + fileNames_.Spell(parent, name);
}

std::wstring ChangeRecorder::KeyAsSpelled(RegistryHive hive, const std::wstring& keyPath) {
  SpelledNames& names = hive == RegistryHive::kCurrentUser ? userKeyNames_ : machineKeyNames_;
  const std::wstring parent = ParentKey(keyPath);
  if (parent.empty()) return names.Spell(parent, keyPath);
  return JoinKey(parent, names.Spell(parent, keyPath.substr(parent.size() + 1)));
}

SystemCode ChangeRecorder::KeepCopy(const std::wstring& path, FileChanging& change) {
  change.copy = NextCopyName();
  return files_.CopyOver(path, Folder() + L"\\" + change.copy);
}

std::wstring ChangeRecorder::NextCopyName() {
  return std::wstring(kCopiesFolder) + L"\\" + std::to_wstring(++copies_);
}

void ChangeRecorder::FileChanged(const std::wstring& path) {
  carrovan::FileChanged change{TidyPath(path), {}};
  // A change without this second note counts as the run's own, which is what it is.
  if (ReadFileImage(files_, change.path, change.after) != kSystemOk) return;
  static_cast<void>(Append(change));
}

SystemCode ChangeRecorder::TreeChanges(const std::wstring& path, std::vector<std::wstring>& noted) {
  if (const SystemCode code = FileChanges(path); code != kSystemOk) return code;
  noted.push_back(path);
  if (files_.IsLink(path) || !files_.IsFolder(path)) return kSystemOk;
  for (const FolderEntry& entry : ListFolder(files_, path)) {
    const SystemCode code =
        TreeChanges(WithoutTrailingBackslashes(path) + L"\\" + entry.name, noted);
    if (code != kSystemOk) return code;
  }
  return kSystemOk;
}

SystemCode ChangeRecorder::TakeLink(const std::wstring& path) {
  const std::wstring tidy = TidyPath(path);
  if (IsAtOrBelow(tidy, root_)) return kAccessDenied;
  FileChanging change{AsSpelled(tidy), FileImage{FileKind::kLink}, NextCopyName(), {}};
  if (const SystemCode code = Append(change); code != kSystemOk) return code;
  notedFiles_.insert(tidy);
  return files_.MoveTo(tidy, Folder() + L"\\" + change.copy);
}

KeyImage ChangeRecorder::ImageOfKey(RegistryHive hive, const std::wstring& keyPath) const {
  auto values = registry_.Values(hive, keyPath);
  return values ? KeyImage{true, std::move(*values)} : KeyImage{};
}

SystemCode ChangeRecorder::KeyChanges(RegistryHive hive, const std::wstring& keyPath,
                                      const std::vector<std::wstring>& setting) {
  const std::wstring parent = ParentKey(keyPath);
  if (!parent.empty() && !registry_.CanOpenKey(hive, parent)) {
    if (const SystemCode code = KeyChanges(hive, parent); code != kSystemOk) return code;
  }
  return NoteKey(hive, keyPath, setting);
}

SystemCode ChangeRecorder::NoteKey(RegistryHive hive, const std::wstring& keyPath,
                                   const std::vector<std::wstring>& setting) {
  const std::wstring name = FullKeyPath(hive, keyPath);
  KeyChanging change{hive, keyPath, std::nullopt, setting};
  if (!notedKeys_.contains(name)) {
    change.before = ImageOfKey(hive, keyPath);
    if (change.before->exists) change.keyPath = KeyAsSpelled(hive, keyPath);
  }
  const SystemCode code = Append(change);
  if (code == kSystemOk) notedKeys_.insert(name);
  return code;
}

void ChangeRecorder::KeyChanged(RegistryHive hive, const std::wstring& keyPath) {
  static_cast<void>(Append(carrovan::KeyChanged{hive, keyPath, ImageOfKey(hive, keyPath)}));
}

SystemCode ChangeRecorder::KeyTreeChanges(RegistryHive hive, const std::wstring& keyPath,
                                          std::vector<std::wstring>& noted) {
  if (const SystemCode code = KeyChanges(hive, keyPath); code != kSystemOk) return code;
  noted.push_back(keyPath);
  const auto subkeys = registry_.SubkeyNames(hive, keyPath);
  if (!subkeys) return kSystemOk;
  for (const std::wstring& subkey : *subkeys) {
    const SystemCode code = KeyTreeChanges(hive, JoinKey(keyPath, subkey), noted);
    if (code != kSystemOk) return code;
  }
  return kSystemOk;
}

bool ChangeRecorder::End() {
  if (!notedFiles_.empty() || !notedKeys_.empty()) {
    static_cast<void>(Append(RunEnded{}));
    return true;
  }
  WipeFolder(files_, Folder());
  return false;
}

}  // namespace carrovan
