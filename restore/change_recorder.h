#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/file_system.h"
#include "platform/machine.h"
#include "platform/registry.h"
#include "restore/journal_record.h"
#include "text/text.h"

namespace carrovan {

// States how a folder or a key spells the names in it, so that what is taken away can come back in
// its own spelling. Keeps the names of the parent that was asked for last.
class SpelledNames {
 public:
  using List = std::function<std::vector<std::wstring>(const std::wstring& parent)>;

  explicit SpelledNames(List list) : list_(std::move(list)) {}

  // The name itself when the parent has none like it.
  std::wstring Spell(const std::wstring& parent, const std::wstring& name);

 private:
  List list_;
  std::wstring parent_;
  std::set<std::wstring, NameLess> names_;
};

// The two of which `parent` is a path. What is looked at outlives the list.
SpelledNames::List NamesInFolders(const FileReader& files);
SpelledNames::List NamesInKeys(const RegistryReader& registry, RegistryHive hive);

// Notes in a restore point's journal what a run is about to change, and keeps a copy of what was
// there. Looks at the machine's own ports; the ports that the run gets call it around each change.
// A change that cannot be noted must not be made.
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

  // Before and after a change of what lies at a path. kAccessDenied for a path among the restore
  // points, which no run may touch. A link is taken out of its place first, so that the change is
  // none of what lies behind it.
  [[nodiscard]] SystemCode FileChanges(const std::wstring& path);
  void FileChanged(const std::wstring& path);

  // The same for a folder with everything below it. Gives the noted paths.
  [[nodiscard]] SystemCode TreeChanges(const std::wstring& path, std::vector<std::wstring>& noted);

  // Before a link is removed: takes it out of its place and keeps it. The link is gone when this
  // succeeds.
  [[nodiscard]] SystemCode TakeLink(const std::wstring& path);

  // Before and after a change of a key's own values, or of its being there. `setting` names the
  // values that the change will set.
  [[nodiscard]] SystemCode KeyChanges(RegistryHive hive, const std::wstring& keyPath,
                                      const std::vector<std::wstring>& setting = {});
  void KeyChanged(RegistryHive hive, const std::wstring& keyPath);

  // The same for a key with everything below it.
  [[nodiscard]] SystemCode KeyTreeChanges(RegistryHive hive, const std::wstring& keyPath,
                                          std::vector<std::wstring>& noted);

  // The run is over. A restore point that holds nothing is removed; gives whether one remains.
  bool End();

 private:
  ChangeRecorder(const Machine& machine, std::wstring root, std::wstring id);

  std::wstring Folder() const { return root_ + L"\\" + id_; }
  [[nodiscard]] SystemCode Append(const JournalRecord& record);
  [[nodiscard]] SystemCode MakeFolders();
  [[nodiscard]] SystemCode NoteMissingParents(const std::wstring& path);
  [[nodiscard]] SystemCode NoteBefore(const std::wstring& path);
  [[nodiscard]] SystemCode KeepCopy(const std::wstring& path, FileChanging& change);
  [[nodiscard]] SystemCode NoteKey(RegistryHive hive, const std::wstring& keyPath,
                                   const std::vector<std::wstring>& setting);
  KeyImage ImageOfKey(RegistryHive hive, const std::wstring& keyPath) const;
  std::wstring NextCopyName();

  // The path with its last name as the folder or the key has it.
  std::wstring AsSpelled(const std::wstring& path);
  std::wstring KeyAsSpelled(RegistryHive hive, const std::wstring& keyPath);

  FileSystem& files_;
  const RegistryReader& registry_;
  const KnownFolders& folders_;
  std::wstring root_;
  std::wstring id_;
  std::set<std::wstring, NameLess> notedFiles_;
  std::set<std::wstring, NameLess> notedKeys_;  // with their root's name
  std::vector<std::wstring> scratch_;
  SpelledNames fileNames_;
  SpelledNames userKeyNames_;
  SpelledNames machineKeyNames_;
  std::size_t copies_ = 0;
};

// Makes one change of what lies at a path, noted before and after. Gives what `change` gives, or
// `refusal` of the code when it could not be noted, in which case it is not made.
template <typename Change, typename Refusal>
auto MakeRecorded(ChangeRecorder& recorder, const std::wstring& path, Change change,
                  Refusal refusal) {
  if (recorder.IsScratch(path)) return change();
  if (const SystemCode code = recorder.FileChanges(path); code != kSystemOk) return refusal(code);
  auto result = change();
  recorder.FileChanged(path);
  return result;
}

// The same for an operation whose result is a code.
template <typename Change>
SystemCode MakeRecorded(ChangeRecorder& recorder, const std::wstring& path, Change change) {
  return MakeRecorded(recorder, path, change, [](SystemCode code) { return code; });
}

}  // namespace carrovan
