#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace carrovan {

// A path, taken apart as the file systems do it: either separator, "." and ".." resolved and never
// above the root, blanks and dots at the end of a name dropped.
struct OverlayPath {
  std::wstring root;  // ends in a separator: "C:\", "\", "\\", ".\" for a relative path
  std::vector<std::wstring> names;  // empty for the root itself
  bool mayBeMade = true;            // false: no new file or folder can have this path

  // The folder around it; the root's own is the root.
  OverlayPath Parent() const;
};

// Nothing for a text that is no path: an empty one, or one with a zero in it.
std::optional<OverlayPath> ParseOverlayPath(std::wstring_view path);

std::wstring JoinNames(const std::wstring& folder, const std::wstring& name);

bool IsSamePath(const std::wstring& a, const std::wstring& b);

}  // namespace carrovan
