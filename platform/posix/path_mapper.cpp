#include "platform/posix/path_mapper.h"

#include <algorithm>
#include <system_error>
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
std::vector<std::wstring> Components(std::wstring_view path) {
  std::vector<std::wstring> components;
  while (!path.empty()) {
    const std::size_t end = path.find_first_of(L"\\/");
    const std::wstring_view component = path.substr(0, end);
    path.remove_prefix(end == std::wstring_view::npos ? path.size() : end + 1);
    if (WithoutTrailing(component, L" ") == L"..") {
      if (!components.empty()) components.pop_back();
    } else if (!WithoutTrailing(component, L" .").empty()) {
      components.emplace_back(component);
    }
  }
  return components;
}

bool IsThere(const fs::path& path) {
  std::error_code error;
  return fs::exists(fs::symlink_status(path, error));
}

// Of several spellings the first in the host's own order, so that the answer is always the same.
fs::path FindIgnoringCase(const fs::path& folder, const std::wstring& name) {
  fs::path found;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    const fs::path candidate = entry->path().filename();
    if (CompareNames(TextFromHostName(candidate), name) != 0) continue;
    if (found.empty() || candidate < found) found = candidate;
  }
  return found;
}

// Plain text behind the folder: the path operator would let a component with a drive letter of its
// own replace the folder.
fs::path Below(fs::path folder, const fs::path& name) {
  folder += fs::path::preferred_separator;
  folder += name;
  return folder;
}

fs::path FindChild(const fs::path& folder, const std::wstring& component) {
  fs::path exact = Below(folder, HostPathFromText(component));
  if (IsThere(exact)) return exact;
  const std::wstring name(WithoutTrailing(component, L" ."));
  const fs::path found = FindIgnoringCase(folder, name);
  return Below(folder, found.empty() ? HostPathFromText(name) : found);
}

// Most paths are spelled as on disk: then one look is enough, or two for a new file.
std::optional<fs::path> FindExact(const fs::path& drive,
                                  const std::vector<std::wstring>& components) {
  if (components.empty()) return std::nullopt;
  fs::path parent = drive;
  for (std::size_t i = 0; i + 1 < components.size(); ++i) {
    parent = Below(std::move(parent), HostPathFromText(components[i]));
  }
  fs::path whole = Below(parent, HostPathFromText(components.back()));
  if (IsThere(whole)) return whole;
  if (!IsThere(parent)) return std::nullopt;
  return FindChild(parent, components.back());
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
  const std::vector<std::wstring> components = Components(std::wstring_view(path).substr(2));
  const std::wstring drive(1, letter);
  if (auto exact = FindExact(Below(root_, HostPathFromText(drive)), components)) return exact;
  fs::path found = FindChild(root_, drive);
  for (const std::wstring& component : components) found = FindChild(found, component);
  return found;
}

bool DrivePathMapper::MayBeMade(const std::wstring& path) const {
  if (!BeginsWithDrive(path)) return true;
  return std::none_of(path.begin() + 2, path.end(), IsForbiddenInPath);
}

}  // namespace carrovan
