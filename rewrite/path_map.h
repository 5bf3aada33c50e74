#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace carrovan {

// Longest path that the system takes.
inline constexpr std::size_t kLongestPath = 32767;

// A beginning of paths and what comes in its place. Both are tidy: one backslash between names, two
// in front of a network path, none at the end, so that a drive's root is "D:".
struct PathMapping {
  std::wstring from;
  std::wstring to;

  bool operator==(const PathMapping&) const = default;
};

// Where a path that names no drive and no server begins: "%NAME%" and a separator. The number of
// characters of the variable with its signs; 0 for any other text.
std::size_t VariableLength(std::u16string_view text);

// Reads "OLD=NEW". Both are absolute paths: on a drive, on a server or behind a variable such as
// %USERPROFILE%. Of several "=", the first that has such a path behind it parts them. The mapping
// is left out when that cannot be read; `problem` then reports why, as it reads behind the text and
// a colon.
struct ParsedMapping {
  std::optional<PathMapping> mapping;
  std::wstring problem;
};
ParsedMapping ParsePathMapping(std::wstring_view text);

// Replaces beginnings of paths. Only whole names count, in any case of letters; of several
// beginnings that fit, the longest.
class PathMap {
 public:
  PathMap() = default;
  explicit PathMap(std::vector<PathMapping> mappings);

  // Two mappings that give one beginning different ends, as one line; nothing when all agree.
  static std::optional<std::wstring> Contradiction(const std::vector<PathMapping>& mappings);

  bool IsEmpty() const { return mappings_.empty(); }

  // The mapping of a tidy path; null when none fits.
  const PathMapping* Find(std::wstring_view path) const;

  const std::vector<PathMapping>& Mappings() const { return mappings_; }

 private:
  std::vector<PathMapping> mappings_;  // the longest beginning first
  std::vector<std::u16string> folded_;
};

}  // namespace carrovan
