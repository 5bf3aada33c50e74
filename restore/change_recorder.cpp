#include "restore/change_recorder.h"

#include <algorithm>
#include <utility>

#include "platform/file_operations.h"
#include "platform/listed_kinds.h"
#include "registry_text/registry_key.h"
#include "restore/prune.h"
#include "restore/restore_point.h"
#include "text/path_text.h"

namespace carrovan {

std::wstring SpelledNames::Spell(const std::wstring& parent, const std::wstring& name) {
  if (parent != parent_ || !names_.contains(name)) ListNames(parent);
  const auto spelled = names_.find(name);
  return spelled == names_.end() ? name : *spelled;
}

bool SpelledNames::Has(const std::wstring& parent, const std::wstring& name) {
  if (parent != parent_) ListNames(parent);
  return names_.contains(name);
}

void SpelledNames::ListNames(const std::wstring& parent) {
  parent_ = parent;
  names_.clear();
  for (std::wstring& each : list_(parent)) names_.insert(std::move(each));
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
  if (code == kSystemOk) {
    recorder->journal_.Add(about);
    code = recorder->FlushBeginning();
  }
  if (code == kSystemOk) return {std::move(recorder), {}};
  return {nullptr, recorder->Folder() + L": " + DescribeSystemCode(code)};
}

ChangeRecorder::ChangeRecorder(const Machine& machine, const std::wstring& root, std::wstring id)
    : files_(*machine.files),
      registry_(*machine.registry),
      folders_(*machine.folders),
      root_(TidyPath(root)),
      id_(std::move(id)),
      journal_(files_, Folder() + L"\\" + kJournalName, 0),
      fileNames_(NamesInFolders(files_)),
      userKeyNames_(NamesInKeys(registry_, RegistryHive::kCurrentUser)),
      machineKeyNames_(NamesInKeys(registry_, RegistryHive::kLocalMachine)) {}

SystemCode ChangeRecorder::MakeFolders() { return MakeFolderPath(files_, CopiesFolder()); }

// The names of the restore point and of what is in it, and of each folder on the way that may just
// have been made.
SystemCode ChangeRecorder::FlushBeginning() {
  const std::wstring own = RemoveFileSpec(root_);
  return journal_.Flush({Folder(), root_, own, RemoveFileSpec(own)});
}

// A file that is only moved into the restore point lies in one place or the other. What is made
// anew in the first, or takes away its folder, must not be safe earlier than the move.
SystemCode ChangeRecorder::FlushNotes(ComingChange change) {
  std::vector<std::wstring> paths = unsafeCopies_;
  if (!paths.empty() || (hasUnsafeMoves_ && change != ComingChange::kRemoval)) {
    paths.push_back(CopiesFolder());
  }
  const bool flushesMoves = !paths.empty();
  if (const SystemCode code = journal_.Flush(paths); code != kSystemOk) return code;
  unsafeCopies_.clear();
  if (flushesMoves) hasUnsafeMoves_ = false;
  return kSystemOk;
}

void ChangeRecorder::Describe(const PointBegun& about) {
  journal_.Add(about);
  static_cast<void>(journal_.Write());
}

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
  journal_.Add(ScratchMade{tidy});
  const SystemCode code = NotesAreSafe();
  if (code == kSystemOk) scratch_.push_back(tidy);
  return code;
}

void ChangeRecorder::Announce(std::span<const std::wstring> paths, ComingChange change) {
  for (const std::wstring& each : paths) {
    const std::wstring path = TidyPath(each);
    if (IsScratch(path)) continue;
    if (change == ComingChange::kRemoval) {
      NoteTree(path, KindAt(files_, path));
    } else {
      NoteReplacement(path);
    }
  }
}

// Links are taken when their turn comes, and what lies behind them does not change.
void ChangeRecorder::NoteTree(const std::wstring& path, FileKind kind) {
  if (kind == FileKind::kLink || kind == FileKind::kAbsent) return;
  static_cast<void>(NoteFile(path, ComingChange::kRemoval, kind));
  if (kind != FileKind::kFolder) return;
  for (const FolderEntry& entry : ListFolder(files_, path)) {
    NoteTree(path + L"\\" + entry.name, KindOf(entry));
  }
}

void ChangeRecorder::NoteReplacement(const std::wstring& path) {
  if (IsNoted(path) || files_.IsLink(path)) return;
  static_cast<void>(NoteFile(path, ComingChange::kReplacement));
}

// Noted as changing, with nothing left to be kept before it may be replaced.
bool ChangeRecorder::IsNoted(const std::wstring& path) const {
  const auto found = notedFiles_.find(path);
  if (found == notedFiles_.end()) return false;
  const NotedFile& file = found->second;
  return file.isOpen && (file.copy.empty() || file.isKept);
}

bool ChangeRecorder::IsOpenFile(const std::wstring& path) const {
  const auto found = notedFiles_.find(TidyPath(path));
  return found != notedFiles_.end() && found->second.isOpen &&
         found->second.before.kind == FileKind::kFile;
}

SystemCode ChangeRecorder::FileChanges(const std::wstring& path) {
  const std::wstring tidy = TidyPath(path);
  if (files_.IsLink(tidy)) return TakeLink(tidy);
  const SystemCode code = NoteFile(tidy, ComingChange::kReplacement);
  return code == kSystemOk ? NotesAreSafe() : code;
}

SystemCode ChangeRecorder::NoteFile(const std::wstring& path, ComingChange change,
                                    std::optional<FileKind> kind) {
  if (IsAtOrBelow(path, root_)) return kAccessDenied;
  if (const SystemCode code = NoteMissingParents(path); code != kSystemOk) return code;
  const auto found = notedFiles_.find(path);
  if (found == notedFiles_.end()) {
    return NoteFirstChange(path, change, kind ? *kind : KindAt(files_, path));
  }
  NotedFile& file = found->second;
  // What an earlier change left is not what this one leaves.
  if (const auto changed = changedFiles_.find(path); changed != changedFiles_.end()) {
    changed->second.reset();
  }
  if (change == ComingChange::kReplacement && !file.copy.empty() && !file.isKept) {
    if (const SystemCode code = KeepCopy(path, file); code != kSystemOk) return code;
  }
  if (!file.isOpen) {
    journal_.Add(FileChanging{file.spelled, std::nullopt, {}, PartNameFor(path)});
  }
  file.isOpen = true;
  return kSystemOk;
}

// A change may make the folders above, too.
SystemCode ChangeRecorder::NoteMissingParents(const std::wstring& path) {
  const std::wstring parent = RemoveFileSpec(path);
  if (parent.empty() || parent == path || IsNoted(parent) || files_.Exists(parent)) {
    return kSystemOk;
  }
  if (const SystemCode code = NoteMissingParents(parent); code != kSystemOk) return code;
  return NoteFile(parent, ComingChange::kReplacement);
}

SystemCode ChangeRecorder::NoteFirstChange(const std::wstring& path, ComingChange change,
                                           FileKind kind) {
  NotedFile file;
  SystemCode code = ReadFileImage(files_, path, kind, file.before);
  file.spelled = file.before.kind == FileKind::kAbsent ? path : AsSpelled(path);
  if (code == kSystemOk && file.before.kind == FileKind::kFile) {
    file.copy = NextCopyName();
    if (change == ComingChange::kReplacement) code = KeepCopy(path, file);
  }
  if (code != kSystemOk) return code;
  journal_.Add(FileChanging{file.spelled, file.before, file.copy, PartNameFor(path)});
  file.isOpen = true;
  notedFiles_.emplace(path, std::move(file));
  return kSystemOk;
}

// The name that a new content of the file is going to have while it is written.
std::wstring ChangeRecorder::PartNameFor(const std::wstring& path) {
  const std::wstring name = PartName(0);
  return fileNames_.Has(RemoveFileSpec(path), name) ? std::wstring() : name;
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

SystemCode ChangeRecorder::KeepCopy(const std::wstring& path, NotedFile& file) {
  const SystemCode code = files_.CopyOver(path, PathOfCopy(file));
  if (code != kSystemOk) return code;
  file.isKept = true;
  unsafeCopies_.push_back(PathOfCopy(file));
  return kSystemOk;
}

SystemCode ChangeRecorder::MoveIntoPoint(const std::wstring& path, NotedFile& file) {
  const SystemCode code = files_.MoveTo(path, PathOfCopy(file));
  if (code != kSystemOk) return code;
  file.isKept = true;
  hasUnsafeMoves_ = true;
  return kSystemOk;
}

std::wstring ChangeRecorder::NextCopyName() {
  return std::wstring(kCopiesFolder) + L"\\" + std::to_wstring(++copies_);
}

SystemCode ChangeRecorder::TakeFile(const std::wstring& path) {
  const std::wstring tidy = TidyPath(path);
  const bool isFile = notedFiles_.contains(tidy) || KindAt(files_, tidy) == FileKind::kFile;
  if (!isFile) return files_.RemoveFile(tidy);
  if (files_.IsReadOnly(tidy)) return kAccessDenied;
  SystemCode code = NoteFile(tidy, ComingChange::kRemoval);
  if (code == kSystemOk) code = FlushNotes(ComingChange::kRemoval);
  if (code != kSystemOk) return code;
  NotedFile& file = notedFiles_.at(tidy);
  if (file.copy.empty() || file.isKept) return files_.RemoveFile(tidy);
  if (MoveIntoPoint(tidy, file) == kSystemOk) return kSystemOk;
  // The restore point may lie on another volume.
  code = KeepCopy(tidy, file);
  if (code == kSystemOk) code = FlushNotes(ComingChange::kRemoval);
  return code == kSystemOk ? files_.RemoveFile(tidy) : code;
}

void ChangeRecorder::FileChanged(const std::wstring& path, const std::optional<FileImage>& now) {
  // So many changes at most count as the run's own, whatever comes after them, when it is killed.
  constexpr std::size_t kMostUnnoted = 256;
  changedFiles_.insert_or_assign(TidyPath(path), now);
  if (changedFiles_.size() >= kMostUnnoted) static_cast<void>(FlushChanges());
}

SystemCode ChangeRecorder::FlushChanges() {
  std::set<std::wstring, NameLess> paths;
  for (const auto& [path, now] : changedFiles_) {
    // Of what is gone the folder alone says so.
    if (!now || now->kind != FileKind::kAbsent) paths.insert(path);
    paths.insert(RemoveFileSpec(path));
  }
  SystemCode code = files_.Flush(std::vector<std::wstring>(paths.begin(), paths.end()));
  for (const RegistryHive hive : {RegistryHive::kCurrentUser, RegistryHive::kLocalMachine}) {
    const auto isIn = [hive](const ChangedKey& key) { return key.hive == hive; };
    if (std::ranges::none_of(changedKeys_, isIn)) continue;
    const SystemCode flushed = registry_.Flush(hive);
    if (code == kSystemOk) code = flushed;
  }
  if (code == kSystemOk) NoteThatChangesAreOver();
  return code;
}

// A change without this second note counts as the run's own, which is what it is.
void ChangeRecorder::NoteThatChangesAreOver() {
  for (const auto& [path, now] : changedFiles_) {
    carrovan::FileChanged change{path, now.value_or(FileImage{})};
    const auto noted = notedFiles_.find(path);
    if (noted == notedFiles_.end()) continue;  // it could not be noted, and was not changed
    if (!now && ReadFileImage(files_, path, change.after) != kSystemOk) continue;
    journal_.Add(change);
    noted->second.isOpen = false;
    noted->second.isChanged = change.after != noted->second.before;
  }
  for (const ChangedKey& key : changedKeys_) {
    journal_.Add(carrovan::KeyChanged{key.hive, key.path, ImageOfKey(key.hive, key.path)});
  }
  changedFiles_.clear();
  changedKeys_.clear();
  static_cast<void>(journal_.Write());
}

SystemCode ChangeRecorder::TreeMoves(const std::wstring& from, const std::wstring& to,
                                     std::vector<std::wstring>& noted) {
  const SystemCode code = NoteMove(TidyPath(from), TidyPath(to), noted);
  return code == kSystemOk ? NotesAreSafe() : code;
}

SystemCode ChangeRecorder::NoteMove(const std::wstring& from, const std::wstring& to,
                                    std::vector<std::wstring>& noted) {
  if (files_.IsLink(from)) return TakeLink(from);
  for (const std::wstring& path : {from, to}) {
    const SystemCode code = NoteFile(path, ComingChange::kReplacement);
    if (code != kSystemOk) return code;
    noted.push_back(path);
  }
  if (!files_.IsFolder(from)) return kSystemOk;
  for (const FolderEntry& entry : ListFolder(files_, from)) {
    const SystemCode code = NoteMove(from + L"\\" + entry.name, to + L"\\" + entry.name, noted);
    if (code != kSystemOk) return code;
  }
  return kSystemOk;
}

SystemCode ChangeRecorder::TakeLink(const std::wstring& path) {
  const std::wstring tidy = TidyPath(path);
  if (IsAtOrBelow(tidy, root_)) return kAccessDenied;
  // What was changed behind the link cannot be seen from here any more when it is gone.
  if (!changedFiles_.empty()) static_cast<void>(FlushChanges());
  NotedFile link{AsSpelled(tidy), FileImage{FileKind::kLink}, NextCopyName(), false, true, true};
  journal_.Add(FileChanging{link.spelled, link.before, link.copy, {}});
  if (const SystemCode code = FlushNotes(ComingChange::kRemoval); code != kSystemOk) return code;
  const SystemCode code = MoveIntoPoint(tidy, link);
  notedFiles_.insert_or_assign(tidy, std::move(link));
  return code;
}

KeyImage ChangeRecorder::ImageOfKey(RegistryHive hive, const std::wstring& keyPath) const {
  auto values = registry_.Values(hive, keyPath);
  return values ? KeyImage{true, std::move(*values)} : KeyImage{};
}

void ChangeRecorder::KeyChanges(RegistryHive hive, const std::wstring& keyPath,
                                const std::vector<std::wstring>& setting) {
  const std::wstring parent = ParentKey(keyPath);
  if (!parent.empty() && !registry_.CanOpenKey(hive, parent)) KeyChanges(hive, parent);
  NoteKey(hive, keyPath, setting);
}

void ChangeRecorder::NoteKey(RegistryHive hive, const std::wstring& keyPath,
                             const std::vector<std::wstring>& setting) {
  KeyChanging change{hive, keyPath, std::nullopt, setting};
  NotedKeys& noted = notedKeys_[hive];
  if (!noted.contains(keyPath)) {
    change.before = ImageOfKey(hive, keyPath);
    if (change.before->exists) change.keyPath = KeyAsSpelled(hive, keyPath);
    noted.emplace(change.keyPath, *change.before);
  }
  journal_.Add(change);
}

void ChangeRecorder::KeyTreeChanges(RegistryHive hive, const std::wstring& keyPath,
                                    std::vector<std::wstring>& noted) {
  KeyChanges(hive, keyPath);
  noted.push_back(keyPath);
  const auto subkeys = registry_.SubkeyNames(hive, keyPath);
  if (!subkeys) return;
  for (const std::wstring& subkey : *subkeys) {
    KeyTreeChanges(hive, JoinKey(keyPath, subkey), noted);
  }
}

void ChangeRecorder::KeyChanged(RegistryHive hive, std::wstring keyPath) {
  changedKeys_.push_back({hive, std::move(keyPath)});
}

bool ChangeRecorder::End(const std::vector<std::wstring>& log) {
  EndOpenChanges();
  if (ChangedNothing()) {
    journal_.Close();
    RemoveRestorePoint(files_, root_, id_);
    static_cast<void>(files_.RemoveFolder(root_));
  }
  if (!files_.IsFolder(Folder())) return false;
  // The last line vouches for all in front of it.
  static_cast<void>(journal_.Flush(WriteLog(log)));
  journal_.Add(RunEnded{});
  static_cast<void>(journal_.Flush());
  journal_.Close();
  return true;
}

// Gives what is to be flushed of it. An undo needs none of it, so that a failure is no matter.
std::vector<std::wstring> ChangeRecorder::WriteLog(const std::vector<std::wstring>& log) {
  std::string text;
  for (const std::wstring& line : log) text += ToUtf8(line) + "\r\n";
  const std::wstring path = Folder() + L"\\" + kLogName;
  if (text.empty() || files_.AppendBytes(path, text) != kSystemOk) return {};
  return {path, Folder()};
}

// What was announced may not have changed at all.
void ChangeRecorder::EndOpenChanges() {
  for (const auto& [path, file] : notedFiles_) {
    if (file.isOpen) changedFiles_.emplace(path, std::nullopt);
  }
  static_cast<void>(FlushChanges());
}

bool ChangeRecorder::ChangedNothing() {
  fileNames_.Forget();
  userKeyNames_.Forget();
  machineKeyNames_.Forget();
  for (const auto& [path, file] : notedFiles_) {
    if (!IsAsBefore(path, file)) return false;
  }
  for (const auto& [hive, noted] : notedKeys_) {
    for (const auto& [path, before] : noted) {
      if (!IsAsBefore(hive, path, before)) return false;
    }
  }
  return true;
}

// A link that was taken out of its place may lead elsewhere now.
bool ChangeRecorder::IsAsBefore(const std::wstring& path, const NotedFile& file) {
  if (file.isOpen || file.isChanged || file.before.kind == FileKind::kLink) return false;
  return file.before.kind == FileKind::kAbsent || AsSpelled(path) == file.spelled;
}

bool ChangeRecorder::IsAsBefore(RegistryHive hive, const std::wstring& spelled,
                                const KeyImage& before) {
  if (ImageOfKey(hive, spelled) != before) return false;
  return !before.exists || KeyAsSpelled(hive, spelled) == spelled;
}

}  // namespace carrovan
