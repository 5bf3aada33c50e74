#pragma once

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

}  // namespace carrovan
