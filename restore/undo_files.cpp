#include <algorithm>

#include "platform/part_name.h"
#include "platform/path_text.h"
#include "platform/text.h"
#include "reset/folder_wipe.h"
#include "restore/restore_folder.h"
#include "restore/spelled_names.h"
#include "restore/undo_steps.h"

namespace carrovan {
namespace {

// Puts the files of one restore point back.
class FileUndo {
 public:
  FileUndo(const RestorePoint& point, const UndoChoice& choice, FileSystem& files,
           UndoReport& report)
      : point_(point),
        choice_(choice),
        files_(files),
        report_(report),
        spelled_(NamesInFolders(files)) {}

  // What the run made goes before what was there comes back, folders before what was in them. Links
  // come first of all: only then their paths lead to what was changed behind them.
  void Run() {
    RemoveLeftParts();
    PutLinksBack();
    ChooseFiles();
    for (const FileHistory* file : chosen_) RemoveMadeFile(*file);
    for (auto file = chosen_.rbegin(); file != chosen_.rend(); ++file) RemoveMadeFolder(**file);
    for (const FileHistory* file : chosen_) MakeFolder(*file);
    for (const FileHistory* file : chosen_) PutBack(*file);
    SpellAsBefore();
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
      if (!IsBehindMissingLink(*link) && MayChange(*link)) PutLinkBack(*link);
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
      MakeNoted(link, [&] { return files_.MoveTo(link.copy, link.path); });
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
      } else if (kind == FileKind::kFolder && files_.ListFolder(path).empty()) {
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
      if (MayChange(file)) chosen_.push_back(&file);
    }
    SortOutermostFirst(chosen_);
  }

  // False for what is as it was, and for what somebody else changed since.
  bool MayChange(const FileHistory& file) {
    FileImage now;
    if (const SystemCode code = ReadFileImage(files_, file.path, now); code != kSystemOk) {
      return Fail(file.path, code);
    }
    if (now == file.before && IsSpelledAsBefore(file)) return false;
    const bool own = choice_.force || IsOwn(file, now);
    if (!own) report_.kept.push_back(L"Kept, as it was changed since: " + file.path);
    return own;
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

  // Changes what lies at a path, noted before and after like a change of the run's own: what an
  // undo that is killed has left there is no other's work.
  template <typename Change>
  void MakeNoted(const FileHistory& file, Change change) {
    FileChanging begun{file.path, std::nullopt, {}, {}};
    if (!files_.Exists(RemoveFileSpec(file.path) + L"\\" + PartName(0))) begun.part = PartName(0);
    Append(begun);
    const SystemCode code = change();
    if (code != kSystemOk) return static_cast<void>(Fail(file.path, code));
    ++report_.restored;
    Append(FileChanged{file.path, file.before});
  }

  // Without the note a second undo takes more care than it needs to.
  void Append(const JournalRecord& record) {
    static_cast<void>(
        files_.AppendBytes(point_.folder + L"\\" + kJournalName, EncodeRecord(record)));
  }

  // A file in the place of nothing or of a folder, and any link: a copy would go where it leads.
  void RemoveMadeFile(const FileHistory& file) {
    const FileKind kind = KindAt(files_, file.path);
    if (kind == FileKind::kLink && files_.IsFolder(file.path)) {
      MakeNoted(file, [&] { return files_.RemoveFolder(file.path); });
    } else if (kind == FileKind::kLink ||
               (kind == FileKind::kFile && file.before.kind != FileKind::kFile)) {
      MakeNoted(file, [&] { return files_.RemoveFile(file.path); });
    }
  }

  void RemoveMadeFolder(const FileHistory& file) {
    if (file.before.kind == FileKind::kFolder || KindAt(files_, file.path) != FileKind::kFolder)
      return;
    if (files_.ListFolder(file.path).empty()) {
      MakeNoted(file, [&] { return files_.RemoveFolder(file.path); });
    } else {
      report_.kept.push_back(L"Kept, as it holds what was added since: " + file.path);
    }
  }

  void MakeFolder(const FileHistory& file) {
    if (file.before.kind != FileKind::kFolder || files_.IsFolder(file.path)) return;
    MakeNoted(file, [&] { return files_.CreateFolder(file.path); });
  }

  void PutBack(const FileHistory& file) {
    if (file.before.kind != FileKind::kFile) return;
    MakeNoted(file, [&] { return files_.CopyOver(file.copy, file.path); });
  }

  // What was removed and made again may have come in another case.
  void SpellAsBefore() {
    SpelledNames spelled(NamesInFolders(files_));
    for (const FileHistory* file : chosen_) {
      const std::wstring folder = RemoveFileSpec(file->path);
      const std::wstring now = folder + L"\\" + spelled.Spell(folder, FileNameOf(file->path));
      if (now == file->path) continue;
      const SystemCode code = files_.MoveTo(now, file->path);
      if (code != kSystemOk) Fail(file->path, code);
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
  UndoReport& report_;
  SpelledNames spelled_;  // before anything is put back
  std::vector<const FileHistory*> chosen_;
  std::vector<std::wstring> missingLinks_;
};

}  // namespace

void UndoFiles(const RestorePoint& point, const UndoChoice& choice, FileSystem& files,
               UndoReport& report) {
  FileUndo(point, choice, files, report).Run();
}

}  // namespace carrovan
