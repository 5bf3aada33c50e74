#pragma once

#include <concepts>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "platform/file_system.h"
#include "platform/machine.h"
#include "platform/registry.h"
#include "restore/journal_record.h"
#include "restore/journal_writer.h"
#include "restore/restore_point.h"
#include "text/text.h"

namespace carrovan {

// Knows the names in a folder or a key and how they are spelled, so that what is taken away can
// come back in its own spelling. Keeps the names of the parent that was asked for last.
class SpelledNames {
 public:
  using List = std::function<std::vector<std::wstring>(const std::wstring& parent)>;

  explicit SpelledNames(List list) : list_(std::move(list)) {}

  // The name itself when the parent has none like it.
  std::wstring Spell(const std::wstring& parent, const std::wstring& name);

  // Whether the parent had such a name when it was listed.
  bool Has(const std::wstring& parent, const std::wstring& name);

  // Names may have been spelled anew since they were listed.
  void Forget() { parent_.reset(); }

 private:
  void ListNames(const std::wstring& parent);

  List list_;
  std::optional<std::wstring> parent_;
  std::set<std::wstring, NameLess> names_;
};

// The two of which `parent` is a path. What is looked at outlives the list.
SpelledNames::List NamesInFolders(const FileReader& files);
SpelledNames::List NamesInKeys(const RegistryReader& registry, RegistryHive hive);

// Notes in a restore point's journal what a run is about to change, and keeps what was there. Looks
// at the machine's own ports; the ports that the run gets call it around each change. A change that
// cannot be noted must not be made.
//
// A loss of power must not take a note or a kept file of a change that is already on the disk.
// Notes are therefore flushed before what they announce is changed, many at once where many changes
// are announced together, and that a change is over is noted only when its content is flushed.
class ChangeRecorder {
 public:
  // Makes the restore point.
  static OrReason<ChangeRecorder> Begin(const Machine& machine, const PointBegun& about);

  const std::wstring& Id() const { return id_; }

  // Notes more of the run than was known at its beginning.
  void Describe(const PointBegun& about);

  // True for what lies in a folder of the run's own, which needs no notes.
  bool IsScratch(const std::wstring& path) const;

  // The run is about to make this folder. One that is named like a run's own becomes its own.
  [[nodiscard]] SystemCode FolderMade(const std::wstring& path);

  // A folder of the run's own that is there already. One that is not named like such a folder is
  // not taken.
  [[nodiscard]] SystemCode TakeScratch(const std::wstring& path);

  // Notes what is about to change, a removal with what lies below the path: one flush before the
  // first change is then enough for all. What cannot be noted now is tried again when its turn
  // comes.
  void Announce(std::span<const std::wstring> paths, ComingChange change);

  // Before and after a change of what lies at a path. kAccessDenied for a path among the restore
  // points, which no run may touch. A link is taken out of its place first, so that the change is
  // none of what lies behind it.
  // After the change, `now` is what it left where that is known, which spares reading it.
  [[nodiscard]] SystemCode FileChanges(const std::wstring& path);
  void FileChanged(const std::wstring& path, const std::optional<FileImage>& now = std::nullopt);

  // True for what was a file when it was noted as changing, and is none but that since: no run
  // makes a link.
  bool IsOpenFile(const std::wstring& path) const;

  // Removes a file in such a way that it is kept.
  [[nodiscard]] SystemCode TakeFile(const std::wstring& path);

  // Before everything at and below one path gets another. Gives the noted paths.
  [[nodiscard]] SystemCode TreeMoves(const std::wstring& from, const std::wstring& to,
                                     std::vector<std::wstring>& noted);

  // Before a link is removed: takes it out of its place and keeps it. The link is gone when this
  // succeeds.
  [[nodiscard]] SystemCode TakeLink(const std::wstring& path);

  // Before changes of a key's own values, or of its being there, or of everything below it too.
  // `setting` names the values that the change will set. The changes may be made when NotesAreSafe.
  void KeyChanges(RegistryHive hive, const std::wstring& keyPath,
                  const std::vector<std::wstring>& setting = {});
  void KeyTreeChanges(RegistryHive hive, const std::wstring& keyPath,
                      std::vector<std::wstring>& noted);
  [[nodiscard]] SystemCode NotesAreSafe() { return FlushNotes(ComingChange::kReplacement); }

  // After such changes.
  void KeyChanged(RegistryHive hive, std::wstring keyPath);

  // The run is over, and what it did is safe from a loss of power. When everything is as it was
  // before, the restore point is removed, and the folder of them with the last; gives whether it
  // remains. The log's lines stay in it as far as they can be written.
  bool End(const std::vector<std::wstring>& log = {});

 private:
  // What is known of a path that was noted.
  struct NotedFile {
    std::wstring spelled;  // the path, its last name as it was
    FileImage before;
    std::wstring copy;       // the file of the restore point that is to hold it; empty for none
    bool isKept = false;     // and does
    bool isOpen = false;     // noted as changing, and not as changed since
    bool isChanged = false;  // as far as it is noted, something else than before
  };
  using NotedKeys = std::map<std::wstring, KeyImage, NameLess>;  // by path, spelled as it was
  struct ChangedKey {
    RegistryHive hive;
    std::wstring path;
  };

  ChangeRecorder(const Machine& machine, const std::wstring& root, std::wstring id);

  std::wstring Folder() const { return root_ + L"\\" + id_; }
  std::wstring CopiesFolder() const { return Folder() + L"\\" + kCopiesFolder; }
  std::wstring PathOfCopy(const NotedFile& file) const { return Folder() + L"\\" + file.copy; }
  [[nodiscard]] SystemCode MakeFolders();
  [[nodiscard]] SystemCode FlushBeginning();
  [[nodiscard]] SystemCode FlushNotes(ComingChange change);
  [[nodiscard]] SystemCode FlushChanges();

  [[nodiscard]] SystemCode NoteFile(const std::wstring& path, ComingChange change,
                                    std::optional<FileKind> kind = std::nullopt);
  [[nodiscard]] SystemCode NoteFirstChange(const std::wstring& path, ComingChange change,
                                           FileKind kind);
  [[nodiscard]] SystemCode NoteMissingParents(const std::wstring& path);
  [[nodiscard]] SystemCode NoteMove(const std::wstring& from, const std::wstring& to,
                                    std::vector<std::wstring>& noted);
  void NoteTree(const std::wstring& path, FileKind kind);
  void NoteReplacement(const std::wstring& path);
  bool IsNoted(const std::wstring& path) const;
  void NoteKey(RegistryHive hive, const std::wstring& keyPath,
               const std::vector<std::wstring>& setting);
  void NoteThatChangesAreOver();
  void EndOpenChanges();
  std::vector<std::wstring> WriteLog(const std::vector<std::wstring>& log);
  bool ChangedNothing();
  bool IsAsBefore(const std::wstring& path, const NotedFile& file);
  bool IsAsBefore(RegistryHive hive, const std::wstring& spelled, const KeyImage& before);

  [[nodiscard]] SystemCode KeepCopy(const std::wstring& path, NotedFile& file);
  [[nodiscard]] SystemCode MoveIntoPoint(const std::wstring& path, NotedFile& file);
  KeyImage ImageOfKey(RegistryHive hive, const std::wstring& keyPath) const;
  std::wstring NextCopyName();
  std::wstring PartNameFor(const std::wstring& path);

  // The path with its last name as the folder or the key has it.
  std::wstring AsSpelled(const std::wstring& path);
  std::wstring KeyAsSpelled(RegistryHive hive, const std::wstring& keyPath);

  FileSystem& files_;
  RegistryEditor& registry_;
  const KnownFolders& folders_;
  std::wstring root_;
  std::wstring id_;
  JournalWriter journal_;
  std::map<std::wstring, NotedFile, NameLess> notedFiles_;
  std::map<RegistryHive, NotedKeys> notedKeys_;
  std::vector<std::wstring> unsafeCopies_;  // made since the last flush
  bool hasUnsafeMoves_ = false;             // into the restore point, since then
  // Of changes that were made, but of which no line says so yet.
  std::map<std::wstring, std::optional<FileImage>, NameLess> changedFiles_;
  std::vector<ChangedKey> changedKeys_;
  std::vector<std::wstring> scratch_;
  SpelledNames fileNames_;
  SpelledNames userKeyNames_;
  SpelledNames machineKeyNames_;
  std::size_t copies_ = 0;
};

// Makes one change of what lies at a path, noted before and after. Gives what `change` gives, or
// `refusal` of the code when it could not be noted, in which case it is not made. A change that
// succeeds leaves `made`, where that is known.
template <typename Change, std::invocable<SystemCode> Refusal>
auto MakeRecorded(ChangeRecorder& recorder, const std::wstring& path, Change change,
                  Refusal refusal, const std::optional<FileImage>& made = std::nullopt) {
  if (recorder.IsScratch(path)) return change();
  if (const SystemCode code = recorder.FileChanges(path); code != kSystemOk) return refusal(code);
  auto result = change();
  const bool succeeded = result == decltype(result){};
  recorder.FileChanged(path, succeeded ? made : std::nullopt);
  return result;
}

// The same for an operation whose result is a code.
template <typename Change>
SystemCode MakeRecorded(ChangeRecorder& recorder, const std::wstring& path, Change change,
                        const std::optional<FileImage>& made = std::nullopt) {
  return MakeRecorded(
      recorder, path, change, [](SystemCode code) { return code; }, made);
}

}  // namespace carrovan
