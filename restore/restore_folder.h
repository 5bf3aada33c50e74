#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "platform/known_folders.h"

namespace carrovan {

// Where restore points lie: one folder each, named by the UTC time at which its run began, with the
// journal in it and copies of what the run changed or removed.

inline constexpr wchar_t kJournalName[] = L"journal.jsonl";
inline constexpr wchar_t kCopiesFolder[] = L"files";

// "Carrovan\Restore" below the user's Local application data; nothing when that cannot be told.
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

}  // namespace carrovan
