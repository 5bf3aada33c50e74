#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "platform/file_system.h"

namespace carrovan {

// Tells whether the paths of a registry file exist. Asks for each distinct path once, and for
// nothing in a folder that is not there.
class PathChecker {
 public:
  explicit PathChecker(const FileReader& files) : files_(files) {}

  // `spelling` is the path as it stands in the file, with its escaping.
  bool Exists(std::u16string_view spelling);

 private:
  // Lets a spelling be looked up without a copy of it.
  struct Hash : std::hash<std::u16string_view> {
    using is_transparent = void;
  };

  bool FolderMayHold(std::wstring path);

  const FileReader& files_;
  std::unordered_map<std::u16string, bool, Hash, std::equal_to<>> paths_;  // by spelling
  std::unordered_map<std::wstring, bool> folders_;
  // Fronts of paths, with the last separator, whose folder is not there. Most paths that lead to
  // nothing have one of a few, so that they are told without being made into paths.
  std::unordered_set<std::u16string, Hash, std::equal_to<>> missingFronts_;
};

}  // namespace carrovan
