#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace carrovan {

// Finds absolute paths in text, however they are spelled, and puts others in their place.

enum class PathSpelling {
  kPlain,          // as it is
  kRegistry,       // between the quotes of a registry file, where a backslash is doubled
  kDocument,       // in an XML document, where references stand for characters
  kAsciiDocument,  // in one whose encoding does not hold every character
};

// A path in a text: on a drive, on a server or behind a variable. It goes on as far as a path can,
// and up to a ";" or "," that has another path or nothing behind it.
struct SpelledPath {
  std::size_t begin = 0;  // in the text
  std::size_t end = 0;

  // Tidy (see PathMapping), but for a separator at the end, which is kept.
  std::u16string path;

  // For each unit of the path where it begins in the text, and the end.
  std::vector<std::size_t> places;

  // What stands between two names: one or more separators.
  std::u16string separator;
};

// The first path at or behind `from`; nothing when there is none.
std::optional<SpelledPath> FindPath(std::u16string_view text, PathSpelling spelling,
                                    std::size_t from = 0);

// A tidy path as the found one is spelled.
std::u16string SpelledLike(std::u16string_view tidy, const SpelledPath& found,
                           PathSpelling spelling);

// Gets a path and gives how many units at its front are to be replaced, and by what tidy path;
// nothing when it stays.
struct NewBeginning {
  std::size_t units = 0;
  std::u16string path;
};
using ReplaceBeginning = std::function<std::optional<NewBeginning>(const SpelledPath& found)>;

// Shows every path of the text, from left to right, and replaces beginnings. True when the text was
// changed.
bool ReplacePaths(std::u16string& text, PathSpelling spelling, const ReplaceBeginning& replace);

}  // namespace carrovan
