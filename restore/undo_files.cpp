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

  // What the run made goes before what was there comes back, folders before what was in them.
  void Run() {
    RemoveLeftParts();
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

  void ChooseFiles() {
    for (const FileHistory& file : point_.files) {
      if (choice_.includesFile && !choice_.includesFile(file)) continue;
      if (MayChange(file)) chosen_.push_back(&file);
    }
    std::ranges::stable_sort(chosen_, [](const FileHistory* a, const FileHistory* b) {
      return CompareNames(a->path, b->path) < 0;
    });
  }

  // False for what is as it was, and for what somebody else changed since.
  bool MayChange(const FileHistory& file) {
    FileImage now;
    if (const SystemCode code = ReadFileImage(files_, file.path, now); code != kSystemOk) {
      return Fail(file.path, code);
    }
    if (now == file.before && IsSpelledAsBefore(file)) return false;
    // What is gone is nobody's work, and a folder is one by what it holds.
    const bool own = file.unfinished || now == file.after || now.kind == FileKind::kAbsent ||
                     now.kind == FileKind::kFolder || choice_.force;
    if (!own) report_.kept.push_back(L"Kept, as it was changed since: " + file.path);
    return own;
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

  // A file in the place of nothing, of a folder or of a link.
  void RemoveMadeFile(const FileHistory& file) {
    if (file.before.kind == FileKind::kFile || KindAt(files_, file.path) != FileKind::kFile) return;
    MakeNoted(file, [&] { return files_.RemoveFile(file.path); });
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
    if (file.before.kind == FileKind::kLink) {
      MakeNoted(file, [&] { return files_.MoveTo(file.copy, file.path); });
    } else if (file.before.kind == FileKind::kFile) {
      MakeNoted(file, [&] { return files_.CopyOver(file.copy, file.path); });
    }
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
};

}  // namespace

void UndoFiles(const RestorePoint& point, const UndoChoice& choice, FileSystem& files,
               UndoReport& report) {
  FileUndo(point, choice, files, report).Run();
}

}  // namespace carrovan
