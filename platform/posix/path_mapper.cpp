#include "platform/posix/path_mapper.h"

#include <algorithm>
#include <vector>

#include "platform/posix/host_access.h"
#include "text/text.h"

namespace carrovan {
namespace {

namespace fs = std::filesystem;

bool IsDriveLetter(wchar_t c) { return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z'); }

bool BeginsWithDrive(std::wstring_view path) {
  return path.size() >= 2 && path[1] == L':' && IsDriveLetter(path[0]);
}

bool IsForbiddenInPath(wchar_t c) {
  constexpr std::wstring_view kForbidden = L"<>:\"|?*";
  return static_cast<char32_t>(c) < 32 || kForbidden.find(c) != std::wstring_view::npos;
}

std::wstring_view WithoutTrailing(std::wstring_view text, std::wstring_view characters) {
  return text.substr(0, text.find_last_not_of(characters) + 1);
}

// The components behind the drive, with those taken away that ".." steps back over. The system
// drops blanks and dots at the end of a component, so "..  " is a ".." too.
std::vector<std::wstring_view> Components(std::wstring_view path) {
  std::vector<std::wstring_view> components;
  while (!path.empty()) {
    const std::size_t end = path.find_first_of(L"\\/");
    const std::wstring_view component = path.substr(0, end);
    path.remove_prefix(end == std::wstring_view::npos ? path.size() : end + 1);
    if (WithoutTrailing(component, L" ") == L"..") {
      if (!components.empty()) components.pop_back();
    } else if (!WithoutTrailing(component, L" .").empty()) {
      components.push_back(component);
    }
  }
  return components;
}

template <typename Char>
bool IsAscii(std::basic_string_view<Char> text) {
  return std::ranges::all_of(text, [](Char c) { return static_cast<char32_t>(c) < 0x80; });
}

template <typename Char>
char32_t LowerAscii(Char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char32_t>(c - 'A' + 'a') : static_cast<char32_t>(c);
}

bool IsLetter(wchar_t c) { return LowerAscii(c) >= 'a' && LowerAscii(c) <= 'z'; }

// Answers for a name that others are compared with. No letter of another alphabet is one of ASCII
// in another case.
class NameMatch {
 public:
  explicit NameMatch(std::wstring_view name) : name_(name), isAscii_(IsAscii(name)) {}

  // False for "17": only the name itself is the same name.
  bool HasOtherSpellings() const { return !isAscii_ || std::ranges::any_of(name_, IsLetter); }

  bool Matches(HostStringView candidate) const {
    if (!isAscii_) return CompareNames(TextFromHostName(candidate), name_) == 0;
    return std::ranges::equal(candidate, name_,
                              [](auto a, auto b) { return LowerAscii(a) == LowerAscii(b); });
  }

 private:
  std::wstring_view name_;
  bool isAscii_;
};

// Of several spellings the first in the host's own order, so that the answer is always the same.
// Empty when there is none.
HostString FindIgnoringCase(const HostString& folder, std::wstring_view name) {
  HostString found;
  const NameMatch match(name);
  if (!match.HasOtherSpellings()) return found;
  ForEachName(folder, [&](HostStringView candidate) {
    if (match.Matches(candidate) && (found.empty() || candidate < found)) found = candidate;
  });
  return found;
}

// Plain text behind the folder: a component with a drive letter of its own does not replace it.
HostString Below(HostString folder, const HostString& name) {
  folder += fs::path::preferred_separator;
  folder += name;
  return folder;
}

HostString FindOtherSpelling(const HostString& folder, std::wstring_view component) {
  const std::wstring_view name = WithoutTrailing(component, L" .");
  const HostString found = FindIgnoringCase(folder, name);
  return Below(folder, found.empty() ? HostStringFromText(name) : found);
}

HostString FindChild(const HostString& folder, std::wstring_view component) {
  HostString exact = Below(folder, HostStringFromText(component));
  return IsThere(exact) ? exact : FindOtherSpelling(folder, component);
}

// Most paths are spelled as on disk: then one look is enough, or two for a new file.
std::optional<HostString> FindExact(const HostString& drive,
                                    const std::vector<std::wstring_view>& components) {
  if (components.empty()) return std::nullopt;
  HostString parent = drive;
  for (std::size_t i = 0; i + 1 < components.size(); ++i) {
    parent = Below(std::move(parent), HostStringFromText(components[i]));
  }
  HostString whole = Below(parent, HostStringFromText(components.back()));
  if (IsThere(whole)) return whole;
  if (!IsThere(parent)) return std::nullopt;
  return FindOtherSpelling(parent, components.back());
}

}  // namespace

std::optional<fs::path> HostPathMapper::ToHost(const std::wstring& path) const {
  // The host would take the text in front of a zero for the whole path.
  if (path.empty() || path.find(L'\0') != std::wstring::npos) return std::nullopt;
  const fs::path host = HostPathFromText(path);
  // Behind a separator at the end lies an empty name, whose parent would be the folder itself.
  return host.has_filename() || !host.has_relative_path() ? host : host.parent_path();
}

bool HostPathMapper::MayBeMade(const std::wstring&) const { return true; }

std::optional<fs::path> DrivePathMapper::ToHost(const std::wstring& path) const {
  if (!BeginsWithDrive(path)) return HostPathMapper().ToHost(path);
  if (path.find(L'\0') != std::wstring::npos) return std::nullopt;
  const wchar_t letter = path[0] >= L'a' ? static_cast<wchar_t>(path[0] - L'a' + L'A') : path[0];
  const std::vector<std::wstring_view> components = Components(std::wstring_view(path).substr(2));
  const std::wstring drive(1, letter);
  const HostString& root = root_.native();
  if (auto exact = FindExact(Below(root, HostStringFromText(drive)), components)) return *exact;
  HostString found = FindChild(root, drive);
  for (const std::wstring_view component : components) found = FindChild(found, component);
  return found;
}

bool DrivePathMapper::MayBeMade(const std::wstring& path) const {
  if (!BeginsWithDrive(path)) return true;
  return std::none_of(path.begin() + 2, path.end(), IsForbiddenInPath);
}

}  // namespace carrovan
