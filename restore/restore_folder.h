#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "platform/known_folders.h"

namespace carrovan {

// Where restore points lie: one folder each, named by the UTC time at which its run began, with the
// journal in it and copies of what the run changed or removed.

inline constexpr wchar_t kJournalName[] = L"journal.jsonl";
inline constexpr wchar_t kCopiesFolder[] = L"files";

// "Carrovan\Restore" below the user's Local application data; nothing when that cannot be told.
std::optional<std::wstring> RestoreRoot(const KnownFolders& folders);

// "2026-03-04T050607Z": sorts by time and is a name that a folder can have.
std::wstring RestorePointId(std::chrono::system_clock::time_point time);

// True for such a name, also with the "-2" of a second run within one second.
bool IsRestorePointId(const std::wstring& name);

}  // namespace carrovan
