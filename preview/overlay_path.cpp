#include "preview/overlay_path.h"

#include <algorithm>

#include "platform/path_text.h"
#include "platform/text.h"

namespace carrovan {
namespace {

constexpr std::wstring_view kSeparators = L"\\/";
constexpr std::size_t kLongestName = 255;  // in 16-bit units

bool IsSeparator(wchar_t c) { return c == L'\\' || c == L'/'; }

bool IsForbidden(wchar_t c) {
  constexpr std::wstring_view kForbidden = L"<>:\"|?*";
  return static_cast<char32_t>(c) < 32 || kForbidden.find(c) != std::wstring_view::npos;
}

std::wstring_view WithoutTrailing(std::wstring_view text, std::wstring_view characters) {
  return text.substr(0, text.find_last_not_of(characters) + 1);
}

std::wstring TakeRoot(std::wstring_view& path) {
  if (path.size() >= 2 && path[1] == L':') {
    std::wstring root(path.substr(0, 2));
    path.remove_prefix(2);
    return root + L"\\";
  }
  if (path.size() >= 2 && IsSeparator(path[0]) && IsSeparator(path[1])) return L"\\\\";
  return IsSeparator(path[0]) ? L"\\" : L".\\";
}

void TakeName(std::wstring_view name, OverlayPath& path) {
  if (WithoutTrailing(name, L" ") == L"..") {
    if (!path.names.empty()) path.names.pop_back();
    return;
  }
  name = WithoutTrailing(name, L" .");
  if (!name.empty()) path.names.emplace_back(name);
}

bool MayBeMade(const std::wstring& name) {
  return std::none_of(name.begin(), name.end(), IsForbidden) &&
         ToUtf16(name).size() <= kLongestName;
}

}  // namespace

OverlayPath OverlayPath::Parent() const {
  OverlayPath parent = *this;
  if (!parent.names.empty()) parent.names.pop_back();
  return parent;
}

std::optional<OverlayPath> ParseOverlayPath(std::wstring_view path) {
  if (path.empty() || path.find(L'\0') != std::wstring_view::npos) return std::nullopt;
  OverlayPath parsed;
  parsed.root = TakeRoot(path);
  while (!path.empty()) {
    const std::size_t end = std::min(path.find_first_of(kSeparators), path.size());
    TakeName(path.substr(0, end), parsed);
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  parsed.mayBeMade = std::all_of(parsed.names.begin(), parsed.names.end(), MayBeMade);
  return parsed;
}

std::wstring JoinNames(const std::wstring& folder, const std::wstring& name) {
  return WithTrailingBackslash(folder) + name;
}

bool IsSamePath(const std::wstring& a, const std::wstring& b) { return CompareNames(a, b) == 0; }

}  // namespace carrovan
