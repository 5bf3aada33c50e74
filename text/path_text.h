#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace carrovan {

// Windows paths as text. Nothing here looks at a disk.

// Longest path, with its terminating zero, that the system's fixed path buffers hold.
inline constexpr std::size_t kFixedPathBuffer = 260;

bool EndsInSeparator(std::wstring_view path);

// The path, ending in exactly the separator it has or in one new backslash.
std::wstring WithTrailingBackslash(std::wstring path);

std::wstring WithoutTrailingBackslashes(std::wstring path);

// The path with one backslash between two names and none at the end, but for the two with which a
// network path begins. Two tidy paths name the same place when they are the same name.
std::wstring TidyPath(std::wstring_view path);

// Removes the last component as the shell does: "C:\A\B" gives "C:\A", a trailing backslash counts
// as one removal, and a root stays as it is.
std::wstring RemoveFileSpec(std::wstring path);

// Text after the last backslash or slash.
std::wstring FileNameOf(std::wstring_view path);

// True for a GUID in the form of the registry, without its braces.
bool IsGuid(std::wstring_view name);

// Name of the file in which new content is written before it takes a file's place. Of the names
// from attempt 0 on, the first that nothing in the folder has is taken. It does not grow with the
// name of the file, which may be as long as a name can be.
inline std::wstring PartName(int attempt) {
  return L"~carrovan" + std::to_wstring(attempt) + L".part";
}

// Names stored in an archive come from strangers. A name is fit to be put behind a destination
// folder only if it cannot leave that folder and is a name that Windows can give a file.

// Why a stored name is refused ("leads out of the folder"), or nothing when it is fit. A trailing
// separator (a stored folder) is allowed. Both slashes are separators.
std::optional<std::wstring> RefusalOfStoredName(std::wstring_view name);

}  // namespace carrovan
