#include "restore/undo_run.h"

#include <algorithm>
#include <set>

#include "platform/file_operations.h"
#include "platform/listed_kinds.h"
#include "registry_text/registry_key.h"
#include "restore/change_recorder.h"
#include "restore/journal_writer.h"
#include "restore/point_check.h"
#include "restore/restore_point.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

// Puts the files of one restore point back.
class FileUndo {
 public:
  FileUndo(const RestorePoint& point, const UndoChoice& choice, FileSystem& files,
           JournalWriter& journal, UndoReport& report)
      : point_(point),
        choice_(choice),
        files_(files),
        journal_(journal),
        report_(report),
        spelled_(NamesInFolders(files)),
        kinds_(files) {}

  // What the run made goes before what was there comes back, folders before what was in them. Links
  // come first of all: only then their paths lead to what was changed behind them.
  void Run() {
    RemoveLeftParts();
    PutLinksBack();
    ChooseFiles();
    NoteWhatIsPutBack();
    for (const FileHistory* file : inTheWay_) RemoveMadeFile(*file);
    for (auto file = inTheWay_.rbegin(); file != inTheWay_.rend(); ++file) RemoveMadeFolder(**file);
    for (const FileHistory* file : chosen_) MakeFolder(*file);
    for (const FileHistory* file : chosen_) PutBack(*file);
    SpellAsBefore();
    NoteThatAllIsBack();
    RemoveScratch();
  }

 private:
  void RemoveLeftParts() {
    for (const FileHistory& file : point_.files) {
      for (const std::wstring& part : file.parts) {
        if (files_.Exists(part)) static_cast<void>(files_.RemoveFile(part));
      }
    }
  }

  bool IsIncluded(const FileHistory& file) const {
    return !choice_.includesFile || choice_.includesFile(file);
  }

  static void SortOutermostFirst(std::vector<const FileHistory*>& files) {
    std::ranges::stable_sort(files, [](const FileHistory* a, const FileHistory* b) {
      return CompareNames(a->path, b->path) < 0;
    });
  }

  void PutLinksBack() {
    std::vector<const FileHistory*> links;
    for (const FileHistory& file : point_.files) {
      if (file.before.kind == FileKind::kLink && IsIncluded(file)) links.push_back(&file);
    }
    SortOutermostFirst(links);
    for (const FileHistory* link : links) {
      FileImage now;
      const FileKind kind = KindAt(files_, link->path);
      if (!IsBehindMissingLink(*link) && MayChange(*link, kind, now)) PutLinkBack(*link);
      if (KindAt(files_, link->path) != FileKind::kLink) missingLinks_.push_back(link->path);
    }
  }

  // What was changed behind a link cannot come back without it: its path would lead elsewhere.
  bool IsBehindMissingLink(const FileHistory& file) const {
    return std::ranges::any_of(
        missingLinks_, [&file](const std::wstring& link) { return IsAtOrBelow(file.path, link); });
  }

  // What was first changed when the link was gone was not what lies behind it.
  bool WasMadeInPlaceOfLink(const FileHistory& file) const {
    for (const FileHistory& earlier : point_.files) {
      if (&earlier == &file) return false;
      if (earlier.before.kind == FileKind::kLink && IsAtOrBelow(file.path, earlier.path)) {
        return true;
      }
    }
    return false;
  }

  void PutLinkBack(const FileHistory& link) {
    MakeFoldersAround(link);
    ClearPlaceOf(link);
    if (KindAt(files_, link.path) == FileKind::kAbsent) {
      Change(link, files_.MoveTo(link.copy, link.path));
    } else {
      report_.kept.push_back(L"Kept, as it holds what was added since: " + link.path);
    }
  }

  void MakeFoldersAround(const FileHistory& link) {
    std::vector<const FileHistory*> around;
    for (const FileHistory& file : point_.files) {
      const bool isAround = file.path.size() < link.path.size() &&
                            IsAtOrBelow(link.path, file.path) && IsIncluded(file);
      if (isAround && file.before.kind == FileKind::kFolder && IsOwn(file)) around.push_back(&file);
    }
    SortOutermostFirst(around);
    for (const FileHistory* folder : around) {
      RemoveMadeFile(*folder);
      MakeFolder(*folder);
    }
  }

  // What the run has put in a link's place goes, whatever was behind the link under its names.
  void ClearPlaceOf(const FileHistory& link) {
    std::vector<const FileHistory*> inPlace;
    for (const FileHistory& file : point_.files) {
      if (IsAtOrBelow(file.path, link.path)) inPlace.push_back(&file);
    }
    SortOutermostFirst(inPlace);
    for (auto file = inPlace.rbegin(); file != inPlace.rend(); ++file) {
      const std::wstring& path = (*file)->path;
      const FileKind kind = KindAt(files_, path);
      if (kind == FileKind::kFile && IsOwn(**file)) {
        Note(path, files_.RemoveFile(path));
      } else if (kind == FileKind::kFolder && ListFolder(files_, path).empty()) {
        Note(path, files_.RemoveFolder(path));
      }
    }
  }

  void Note(const std::wstring& path, SystemCode code) {
    if (code != kSystemOk) Fail(path, code);
  }

  void ChooseFiles() {
    for (const FileHistory& file : point_.files) {
      if (file.before.kind == FileKind::kLink || !IsIncluded(file)) continue;
      if (WasMadeInPlaceOfLink(file) || IsBehindMissingLink(file)) continue;
      FileImage now;
      if (!MayChange(file, kinds_.At(file.path), now)) continue;
      chosen_.push_back(&file);
      if (now.kind != FileKind::kAbsent && now.kind != file.before.kind) inTheWay_.push_back(&file);
    }
    SortOutermostFirst(chosen_);
    SortOutermostFirst(inTheWay_);
  }

  // False for what is as it was, and for what somebody else changed since. Fills what is there.
  bool MayChange(const FileHistory& file, FileKind kind, FileImage& now) {
    const SystemCode code = ReadFileImage(files_, file.path, kind, now);
    if (code != kSystemOk) {
      return Fail(file.path, code);
    }
    if (now == file.before && IsSpelledAsBefore(file)) return false;
    if (now != file.before && IsNotKept(file)) return Keep(file);
    return choice_.force || IsOwn(file, now) || Keep(file);
  }

  bool Keep(const FileHistory& file) {
    report_.kept.push_back(L"Kept, as it was changed since: " + file.path);
    return false;
  }

  // The run was cut short before it came to the file: what is there now is others' work, and what
  // was there went with it.
  bool IsNotKept(const FileHistory& file) {
    return file.before.kind == FileKind::kFile && kinds_.At(file.copy) == FileKind::kAbsent;
  }

  bool IsOwn(const FileHistory& file) const {
    FileImage now;
    return ReadFileImage(files_, file.path, now) == kSystemOk &&
           (choice_.force || IsOwn(file, now));
  }

  // What is gone is nobody's work, and a folder is one by what it holds. No run makes a link.
  static bool IsOwn(const FileHistory& file, const FileImage& now) {
    if (now.kind == FileKind::kLink) return false;
    return file.unfinished || now == file.after || now.kind == FileKind::kAbsent ||
           now.kind == FileKind::kFolder || std::ranges::count(file.earlier, now) > 0;
  }

  bool IsSpelledAsBefore(const FileHistory& file) {
    const std::wstring name = FileNameOf(file.path);
    return spelled_.Spell(RemoveFileSpec(file.path), name) == name;
  }

  bool Fail(const std::wstring& path, SystemCode code) {
    report_.problems.push_back(L"Not put back: " + path + L": " + DescribeSystemCode(code));
    return false;
  }

  // A file is noted before its content comes back and when that is on the disk, like a change of
  // the run's own: what an undo that is cut short has left there is no other's work. Without the
  // note a second undo takes more care than it needs to, which must not keep the first from a full
  // disk.
  void NoteWhatIsPutBack() {
    for (const FileHistory* file : chosen_) {
      if (file->before.kind != FileKind::kFile) continue;
      FileChanging begun{file->path, std::nullopt, {}, {}};
      if (!spelled_.Has(RemoveFileSpec(file->path), PartName(0))) begun.part = PartName(0);
      journal_.Add(begun);
    }
    static_cast<void>(journal_.Flush());
  }

  void NoteThatAllIsBack() {
    std::set<std::wstring, NameLess> paths;
    for (const FileHistory* file : restored_) {
      paths.insert(file->path);
      paths.insert(RemoveFileSpec(file->path));
    }
    const SystemCode code = files_.Flush(std::vector<std::wstring>(paths.begin(), paths.end()));
    if (code != kSystemOk) {
      report_.problems.push_back(L"What was put back may not be on the disk yet: " +
                                 DescribeSystemCode(code));
      return;
    }
    for (const FileHistory* file : restored_) journal_.Add(FileChanged{file->path, file->before});
  }

  void Change(const FileHistory& file, SystemCode code) {
    if (code != kSystemOk) return static_cast<void>(Fail(file.path, code));
    ++report_.restored;
    restored_.push_back(&file);
  }

  // A file in the place of nothing or of a folder, and any link: a copy would go where it leads.
  void RemoveMadeFile(const FileHistory& file) {
    const FileKind kind = KindAt(files_, file.path);
    if (kind == FileKind::kLink && files_.IsFolder(file.path)) {
      Change(file, files_.RemoveFolder(file.path));
    } else if (kind == FileKind::kLink ||
               (kind == FileKind::kFile && file.before.kind != FileKind::kFile)) {
      Change(file, files_.RemoveFile(file.path));
    }
  }

  void RemoveMadeFolder(const FileHistory& file) {
    if (file.before.kind == FileKind::kFolder || KindAt(files_, file.path) != FileKind::kFolder)
      return;
    if (ListFolder(files_, file.path).empty()) {
      Change(file, files_.RemoveFolder(file.path));
    } else {
      report_.kept.push_back(L"Kept, as it holds what was added since: " + file.path);
    }
  }

  void MakeFolder(const FileHistory& file) {
    if (file.before.kind != FileKind::kFolder || files_.IsFolder(file.path)) return;
    Change(file, files_.CreateFolder(file.path));
  }

  void PutBack(const FileHistory& file) {
    if (file.before.kind != FileKind::kFile) return;
    Change(file, files_.CopyOver(file.copy, file.path));
  }

  // What was removed and made again may have come in another case.
  void SpellAsBefore() {
    SpelledNames spelled(NamesInFolders(files_));
    for (const FileHistory* file : chosen_) {
      const std::wstring folder = RemoveFileSpec(file->path);
      const std::wstring now = folder + L"\\" + spelled.Spell(folder, FileNameOf(file->path));
      if (now == file->path) continue;
      const SystemCode code = files_.MoveTo(now, file->path);
      if (code != kSystemOk) {
        Fail(file->path, code);
      } else {
        restored_.push_back(file);
      }
    }
  }

  void RemoveScratch() {
    for (const std::wstring& folder : point_.scratch) {
      if (!WipeFolder(files_, folder)) {
        report_.problems.push_back(L"Not removed whole: " + folder);
      }
    }
  }

  const RestorePoint& point_;
  const UndoChoice& choice_;
  FileSystem& files_;
  JournalWriter& journal_;
  UndoReport& report_;
  SpelledNames spelled_;  // before anything is put back
  ListedKinds kinds_;     // the same, but for links
  std::vector<const FileHistory*> chosen_;
  std::vector<const FileHistory*> inTheWay_;  // those of another kind than before
  std::vector<const FileHistory*> restored_;
  std::vector<std::wstring> missingLinks_;
};

const RegistryValue* Find(const KeyImage& image, const std::wstring& name) {
  const auto found = std::ranges::find_if(image.values, [&](const RegistryValue& value) {
    return CompareNames(value.name, name) == 0;
  });
  return found == image.values.end() ? nullptr : &*found;
}

// The spelling of a name is no part of the value.
bool IsSame(const RegistryValue* a, const RegistryValue* b) {
  if (a == nullptr || b == nullptr) return a == b;
  return a->type == b->type && a->data == b->data;
}

bool Holds(const std::vector<std::wstring>& names, const std::wstring& name) {
  return std::ranges::any_of(
      names, [&](const std::wstring& other) { return CompareNames(other, name) == 0; });
}

// Puts the keys of one restore point back, value by value.
class KeyUndo {
 public:
  KeyUndo(const RestorePoint& point, const UndoChoice& choice, const Machine& machine,
          UndoReport& report)
      : point_(point), choice_(choice), machine_(machine), report_(report) {}

  // Keys come back from the top down and go from the bottom up; the journal names those above
  // first.
  void Run() {
    for (const KeyHistory& key : point_.keys) {
      if (choice_.includesKey && !choice_.includesKey(key)) continue;
      if (Restore(key)) restored_.push_back(&key);
    }
    std::ranges::stable_sort(restored_, [](const KeyHistory* a, const KeyHistory* b) {
      return a->keyPath.size() > b->keyPath.size();
    });
    for (const KeyHistory* key : restored_) RemoveMadeKey(*key);
  }

 private:
  KeyImage ImageNow(const KeyHistory& key) const {
    auto values = machine_.registry->Values(key.hive, key.keyPath);
    return values ? KeyImage{true, std::move(*values)} : KeyImage{};
  }

  // False when there was nothing to do.
  bool Restore(const KeyHistory& key) {
    const KeyImage now = ImageNow(key);
    if (now == key.before) return false;
    if (key.before.exists && !now.exists && !MakeKey(key)) return true;
    RemoveMadeValues(key, now);
    PutValuesBack(key, now);
    return true;
  }

  bool MakeKey(const KeyHistory& key) {
    return Count(key, L"", machine_.registry->CreateKey(key.hive, key.keyPath));
  }

  void RemoveMadeValues(const KeyHistory& key, const KeyImage& now) {
    for (const RegistryValue& value : now.values) {
      const bool made = Find(key.before, value.name) == nullptr && Holds(key.set, value.name);
      if (!made || !MayChange(key, value.name, &value)) continue;
      Count(key, value.name, machine_.registry->DeleteValue(key.hive, key.keyPath, value.name));
    }
  }

  // All at once: some registries take long to save a change. A value that is there keeps its
  // name's spelling when it is set, so it goes first when that is another one.
  void PutValuesBack(const KeyHistory& key, const KeyImage& now) {
    std::vector<RegistryValue> values;
    for (const RegistryValue& value : key.before.values) {
      const RegistryValue* const current = Find(now, value.name);
      if (current != nullptr && *current == value) continue;
      if (!MayChange(key, value.name, current)) continue;
      if (current != nullptr && current->name != value.name) {
        static_cast<void>(machine_.registry->DeleteValue(key.hive, key.keyPath, current->name));
      }
      values.push_back(value);
    }
    if (values.empty()) return;
    if (Count(key, L"", machine_.registry->SetValues(key.hive, key.keyPath, values))) {
      report_.restored += values.size() - 1;
    }
  }

  bool MayChange(const KeyHistory& key, const std::wstring& name, const RegistryValue* current) {
    if (choice_.force || IsOwn(key, name, current)) return true;
    report_.kept.push_back(L"Kept, as it was changed since: " + NameOf(key, name));
    return false;
  }

  // What is gone is nobody's work.
  static bool IsOwn(const KeyHistory& key, const std::wstring& name, const RegistryValue* current) {
    if (current == nullptr || (key.unfinished && Holds(key.set, name))) return true;
    return key.after && IsSame(Find(*key.after, name), current);
  }

  static std::wstring NameOf(const KeyHistory& key, const std::wstring& name) {
    const std::wstring path = FullKeyPath(key.hive, key.keyPath);
    return name.empty() ? path : path + L", value " + name;
  }

  bool Count(const KeyHistory& key, const std::wstring& name, SystemCode code) {
    if (code == kSystemOk) {
      ++report_.restored;
      return true;
    }
    report_.problems.push_back(L"Not put back: " + NameOf(key, name) + L": " +
                               DescribeSystemCode(code));
    return false;
  }

  void RemoveMadeKey(const KeyHistory& key) {
    if (key.before.exists) return;
    const KeyImage now = ImageNow(key);
    if (!now.exists) return;
    const auto subkeys = machine_.registry->SubkeyNames(key.hive, key.keyPath);
    if (now.values.empty() && subkeys && subkeys->empty()) {
      Count(key, L"", machine_.registry->DeleteTree(key.hive, key.keyPath));
    } else {
      report_.kept.push_back(L"Kept, as it holds what was added since: " + NameOf(key, L""));
    }
  }

  const RestorePoint& point_;
  const UndoChoice& choice_;
  const Machine& machine_;
  UndoReport& report_;
  std::vector<const KeyHistory*> restored_;
};

// The registry comes first: a run that was cut short is undone as long as its files are not back.
void FlushHives(const RestorePoint& point, RegistryEditor& registry, UndoReport& report) {
  for (const RegistryHive hive : {RegistryHive::kCurrentUser, RegistryHive::kLocalMachine}) {
    const auto isIn = [hive](const KeyHistory& key) { return key.hive == hive; };
    if (std::ranges::none_of(point.keys, isIn)) continue;
    const SystemCode code = registry.Flush(hive);
    if (code == kSystemOk) continue;
    report.problems.push_back(L"The registry may not be on the disk yet: " +
                              DescribeSystemCode(code));
  }
}

}  // namespace

UndoReport UndoChanges(const RestorePoint& point, const UndoChoice& choice,
                       const Machine& machine) {
  UndoReport report;
  if (point.files.empty() && point.keys.empty() && point.scratch.empty()) return report;
  report.refused = RefusalsOfPoint(point, choice.trusted, machine);
  if (!report.refused.empty()) return report;
  JournalWriter journal(*machine.files, point.folder + L"\\" + kJournalName, point.lines);
  KeyUndo(point, choice, machine, report).Run();
  FlushHives(point, *machine.registry, report);
  FileUndo(point, choice, *machine.files, journal, report).Run();
  const bool everything = !choice.includesFile && !choice.includesKey;
  journal.Add(Undone{everything && report.IsComplete()});
  if (const SystemCode code = journal.Flush(); code != kSystemOk) {
    report.problems.push_back(L"Not noted in " + point.folder + L": " + DescribeSystemCode(code));
  }
  return report;
}

}  // namespace carrovan
