#include "rewrite/path_checker.h"

#include <algorithm>

#include "platform/path_text.h"
#include "platform/text.h"

namespace carrovan {

bool PathChecker::Exists(std::u16string_view spelling) {
  const std::size_t front = spelling.find_last_of(u"\\/") + 1;  // 0 when there is none
  const std::u16string_view name = spelling.substr(front);
  const bool isPlain = !name.empty() && name.find(u"..") == std::u16string_view::npos;
  if (isPlain && missingFronts_.contains(spelling.substr(0, front))) return false;
  if (const auto known = paths_.find(spelling); known != paths_.end()) return known->second;

  const std::wstring path = ReplaceAll(FromUtf16(spelling), L"\\\\", L"\\");
  const bool mayExist = FolderMayHold(path);
  if (!mayExist && isPlain) {
    missingFronts_.emplace(spelling.substr(0, front));
    return false;
  }
  return paths_.emplace(spelling, mayExist && files_.Exists(path)).first->second;
}

bool PathChecker::FolderMayHold(std::wstring path) {
  // Steps back may lead out of a folder that is not there.
  if (path.find(L"..") != std::wstring::npos) return true;
  std::ranges::replace(path, L'/', L'\\');
  std::wstring folder = RemoveFileSpec(path);
  const bool isRoot = RemoveFileSpec(folder) == folder;
  if (isRoot) return true;
  const auto [known, isNew] = folders_.try_emplace(std::move(folder), false);
  if (isNew) known->second = files_.Exists(known->first);
  return known->second;
}

}  // namespace carrovan
