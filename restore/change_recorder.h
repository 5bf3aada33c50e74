#pragma once

#include <memory>
#include <set>
#include <string>

#include "platform/machine.h"
#include "platform/text.h"
#include "restore/journal_record.h"
#include "restore/spelled_names.h"

namespace carrovan {

// Notes in a restore point's journal what a run is about to change, and keeps a copy of what was
// there. Looks at the machine's own ports; the ports that the run gets call it around each change.
// A change that cannot be noted must not be made.
class ChangeRecorder {
 public:
  // Makes the restore point. Null, with the reason, when that fails.
  static std::unique_ptr<ChangeRecorder> Begin(const Machine& machine, const PointBegun& about,
                                               std::wstring& reason);

  const std::wstring& Id() const { return id_; }

  // Tells more of the run than was known at its beginning.
  void Describe(const PointBegun& about);

  // True for what lies in a folder of the run's own, which needs no notes.
  bool IsScratch(const std::wstring& path) const;

  // The run is about to make this folder. One that is named like a run's own becomes its own.
  [[nodiscard]] SystemCode FolderMade(const std::wstring& path);

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

}  // namespace carrovan
