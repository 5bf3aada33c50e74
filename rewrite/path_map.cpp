#include "rewrite/path_map.h"

#include <algorithm>

#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

bool IsLetter(wchar_t c) { return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z'); }

// A server and a share behind two backslashes.
bool IsNetworkPath(std::wstring_view tidy) {
  if (!tidy.starts_with(L"\\\\")) return false;
  const std::size_t share = tidy.find(L'\\', 2);
  return share != std::wstring_view::npos && share > 2 && share + 1 < tidy.size();
}

bool IsAbsolute(std::wstring_view tidy) {
  const bool onDrive = tidy.size() >= 2 && IsLetter(tidy[0]) && tidy[1] == L':' &&
                       (tidy.size() == 2 || tidy[2] == L'\\');
  return onDrive || IsNetworkPath(tidy) || VariableLength(ToUtf16(std::wstring(tidy) + L"\\")) > 0;
}

bool HoldsWhatNoPathHolds(std::wstring_view path) {
  const auto isUnfit = [](wchar_t c) {
    return c < L' ' || std::wstring_view(L"\"<>|*?").find(c) != std::wstring_view::npos;
  };
  return std::ranges::any_of(path, isUnfit) || path.find(L':', 2) != std::wstring_view::npos;
}

std::wstring_view WithoutOuterBlanks(std::wstring_view text) {
  while (text.starts_with(L' ')) text.remove_prefix(1);
  while (text.ends_with(L' ')) text.remove_suffix(1);
  return text;
}

std::optional<std::wstring> ProblemOf(const std::wstring& path) {
  if (!IsAbsolute(path)) {
    return L"\"" + path + L"\" is no absolute path";
  }
  if (HoldsWhatNoPathHolds(path)) return L"\"" + path + L"\" holds what no path holds";
  if (ToUtf16(path).size() > kLongestPath) return L"a path is longer than any can be";
  return std::nullopt;
}

ParsedMapping Parsed(std::wstring_view from, std::wstring_view to) {
  PathMapping mapping{TidyPath(WithoutOuterBlanks(from)), TidyPath(WithoutOuterBlanks(to))};
  for (const std::wstring* path : {&mapping.from, &mapping.to}) {
    if (const auto problem = ProblemOf(*path)) return {std::nullopt, *problem};
  }
  return {std::move(mapping), {}};
}

}  // namespace

std::size_t VariableLength(std::u16string_view text) {
  constexpr std::size_t kLongestName = 255;
  if (!text.starts_with(u'%')) return 0;
  const std::size_t end = text.substr(0, kLongestName + 2).find(u'%', 1);
  if (end == std::u16string_view::npos || end == 1 || end + 1 >= text.size()) return 0;
  const auto isUnfit = [](char16_t c) {
    return c < u' ' || std::u16string_view(u"\\/\"<>|=;").find(c) != std::u16string_view::npos;
  };
  if (std::ranges::any_of(text.substr(1, end - 1), isUnfit)) return 0;
  return text[end + 1] == u'\\' || text[end + 1] == u'/' ? end + 1 : 0;
}

ParsedMapping ParsePathMapping(std::wstring_view text) {
  const std::size_t first = text.find(L'=');
  if (first == std::wstring_view::npos) return {std::nullopt, L"there is no \"=\" in it"};
  for (std::size_t at = first; at != std::wstring_view::npos; at = text.find(L'=', at + 1)) {
    if (IsAbsolute(TidyPath(WithoutOuterBlanks(text.substr(at + 1))))) {
      return Parsed(text.substr(0, at), text.substr(at + 1));
    }
  }
  return Parsed(text.substr(0, first), text.substr(first + 1));
}

PathMap::PathMap(std::vector<PathMapping> mappings) : mappings_(std::move(mappings)) {
  std::ranges::stable_sort(mappings_, [](const PathMapping& a, const PathMapping& b) {
    return a.from.size() > b.from.size();
  });
  for (const PathMapping& mapping : mappings_) folded_.push_back(FoldedName(mapping.from));
}

std::optional<std::wstring> PathMap::Contradiction(const std::vector<PathMapping>& mappings) {
  for (std::size_t i = 0; i < mappings.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (CompareNames(mappings[i].from, mappings[j].from) != 0) continue;
      if (CompareNames(mappings[i].to, mappings[j].to) == 0) continue;
      return L"\"" + mappings[i].from + L"\" is mapped to \"" + mappings[j].to + L"\" and to \"" +
             mappings[i].to + L"\"";
    }
  }
  return std::nullopt;
}

const PathMapping* PathMap::Find(std::wstring_view path) const {
  const std::u16string folded = FoldedName(path);
  for (std::size_t i = 0; i < folded_.size(); ++i) {
    const std::size_t size = folded_[i].size();
    if (!folded.starts_with(folded_[i])) continue;
    if (folded.size() == size || folded[size] == u'\\') return &mappings_[i];
  }
  return nullptr;
}

}  // namespace carrovan
