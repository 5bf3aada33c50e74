#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file_system.h"
#include "platform/system_facts.h"
#include "restore/journal_record.h"

namespace carrovan {

// Where restore points lie: one folder each, named by the UTC time at which its run began, with the
// journal in it, copies of what the run changed or removed, and the lines of its log.

inline constexpr wchar_t kJournalName[] = L"journal.jsonl";
// What the run reported while it worked, for people. Nothing reads it.
inline constexpr wchar_t kLogName[] = L"log.txt";
inline constexpr wchar_t kCopiesFolder[] = L"files";

// Folders of the application data in which a run changes what it does. No run begins for a product
// of another maker.
inline constexpr std::wstring_view kMakerFolders[] = {L"Vantric", L"ORMA"};

// "Carrovan\Restore" below the user's Local application data; nothing when that is not known.
std::optional<std::wstring> RestoreRoot(const KnownFolders& folders);

// True for a folder directly in the temporary path whose name is a GUID without braces, as a run
// names its own.
bool IsScratchPath(const KnownFolders& folders, const std::wstring& path);

// Whether a path is a folder's own or that of something in it, in any case. Both as TidyPath gives
// them.
bool IsAtOrBelow(std::wstring_view path, std::wstring_view folder);

// "2026-03-04T050607Z": sorts by time and is a name that a folder can have.
std::wstring RestorePointId(std::chrono::system_clock::time_point time);

// True for such a name, also with the "-2" of a second run within one second.
bool IsRestorePointId(const std::wstring& name);

// What a run changed at one path, as its journal states it.
struct FileHistory {
  std::wstring path;
  FileImage before;
  std::wstring copy;                // path of what was there; empty when nothing is kept
  std::optional<FileImage> after;   // of the last change that is known to be over
  std::vector<FileImage> earlier;   // of those before it
  bool unfinished = false;          // another one has begun since
  std::vector<std::wstring> parts;  // files that this one may have left
};

struct KeyHistory {
  RegistryHive hive = RegistryHive::kCurrentUser;
  std::wstring keyPath;
  KeyImage before;
  std::optional<KeyImage> after;
  bool unfinished = false;
  std::vector<std::wstring> set;  // names of values that any of the changes set
};

enum class PointState {
  kUnfinished,  // its run was killed, or is still going on
  kFinished,
  kPartlyUndone,
  kUndone,
};

struct RestorePoint {
  std::wstring id;
  std::wstring folder;
  PointBegun about;
  PointState state = PointState::kUnfinished;
  std::vector<FileHistory> files;     // in the order in which they were first changed
  std::vector<KeyHistory> keys;       // the same
  std::vector<std::wstring> scratch;  // folders of the run's own
  std::size_t lines = 0;              // of the journal, that could be read
  std::wstring damage;                // what is wrong with the journal; empty when it is whole
};

// Newest first. Folders that are no restore points are passed over.
std::vector<std::wstring> RestorePointIds(const FileReader& files, const std::wstring& root);

// Nothing when there is no such point or its journal does not begin as one. A point whose run was
// killed before it noted anything is empty. A line that is not as it was written is passed over as
// what a kill or a loss of power has left, unless it was safe from both: then the point is damaged.
std::optional<RestorePoint> ReadRestorePoint(const FileReader& files, const std::wstring& root,
                                             const std::wstring& id);

}  // namespace carrovan
