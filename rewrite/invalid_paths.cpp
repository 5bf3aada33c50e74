#include "rewrite/invalid_paths.h"

#include <algorithm>

#include "rewrite/path_search.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

std::vector<PathMapping> FromEach(const std::vector<std::wstring>& beginnings) {
  std::vector<PathMapping> mappings;
  mappings.reserve(beginnings.size());
  for (const std::wstring& beginning : beginnings) mappings.push_back({beginning, beginning});
  return mappings;
}

}  // namespace

PathChecker::PathChecker(const FileReader& files, const std::vector<std::wstring>& mappedTo)
    : files_(files), mappedTo_(FromEach(mappedTo)) {}

bool PathChecker::Exists(std::u16string_view spelling) {
  return ExistsWhole(spelling) || BeginsWithMapped(spelling);
}

bool PathChecker::BeginsWithMapped(std::u16string_view spelling) const {
  if (mappedTo_.IsEmpty()) return false;
  const auto found = FindPath(spelling, PathSpelling::kRegistry);
  if (!found || found->begin != 0 || found->end == spelling.size()) return false;
  const std::wstring path = FromUtf16(found->path);
  return mappedTo_.Find(path) != nullptr && files_.Exists(path);
}

bool PathChecker::ExistsWhole(std::u16string_view spelling) {
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

namespace {

// The characters looked at here are one unit in every form, and no other character holds one of
// their bytes.
template <typename Char>
using View = std::basic_string_view<Char>;

template <typename Char>
bool IsBlank(Char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

template <typename Char>
View<Char> Trimmed(View<Char> text) {
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  return text;
}

// Takes the next line off a text that is not empty, and gives it trimmed.
template <typename Char>
View<Char> TakeTrimmedLine(View<Char>& lines) {
  std::string_view bytes = BytesOf(lines);
  const std::size_t size = TakeWholeLines(bytes, 0, sizeof(Char)).size() / sizeof(Char);
  const View<Char> line = lines.substr(0, size);
  lines.remove_prefix(size);
  return Trimmed(line);
}

// What stands between the quotes of a line's string value; empty for a line of another kind.
template <typename Char>
View<Char> QuotedValue(View<Char> line) {
  if (line.empty() || line.back() != '"' || line.front() == '[') return {};
  const View<Char> value = Trimmed(line.substr(std::min(line.find('='), line.size() - 1) + 1));
  return value.size() > 1 && value.front() == '"' ? value.substr(1, value.size() - 2)
                                                  : View<Char>();
}

bool IsAbsolutePath(std::u16string_view text) {
  if (text.size() < 3) return false;
  const bool onDrive = text[1] == u':' && (text[2] == u'\\' || text[2] == u'/');
  return onDrive || text.starts_with(u"\\\\");
}

bool LeadsNowhere(std::u16string_view value, const TextForm& /*form*/, PathChecker& paths) {
  return IsAbsolutePath(value) && !paths.Exists(value);
}

bool LeadsNowhere(std::string_view value, const TextForm& form, PathChecker& paths) {
  return !value.empty() && LeadsNowhere(form.Decode(value), form, paths);
}

template <typename Char>
bool AnyLeadsNowhere(View<Char> lines, const TextForm& form, PathChecker& paths) {
  while (!lines.empty()) {
    if (LeadsNowhere(QuotedValue(TakeTrimmedLine(lines)), form, paths)) return true;
  }
  return false;
}

template <typename Char>
void AppendOthers(View<Char> lines, const TextForm& form, PathChecker& paths, DroppedLines& dropped,
                  std::string& kept) {
  static constexpr Char kLineEnd[] = {'\r', '\n'};
  while (!lines.empty()) {
    const View<Char> line = TakeTrimmedLine(lines);
    if (LeadsNowhere(QuotedValue(line), form, paths)) {
      ++dropped.count;
      if (dropped.report) dropped.report(dropped.keyLine, form.Decode(BytesOf(line)));
    } else {
      if (dropped.report && line.starts_with('[')) form.Decode(BytesOf(line), dropped.keyLine);
      kept.append(BytesOf(line)).append(BytesOf(View<Char>(kLineEnd, 2)));
    }
  }
}

}  // namespace

bool HoldsInvalidPath(std::u16string_view lines, const TextForm& form, PathChecker& paths) {
  return AnyLeadsNowhere(lines, form, paths);
}

bool HoldsInvalidPath(std::string_view lines, const TextForm& form, PathChecker& paths) {
  return AnyLeadsNowhere(lines, form, paths);
}

void AppendOtherLines(std::u16string_view lines, const TextForm& form, PathChecker& paths,
                      DroppedLines& dropped, std::string& kept) {
  AppendOthers(lines, form, paths, dropped, kept);
}

void AppendOtherLines(std::string_view lines, const TextForm& form, PathChecker& paths,
                      DroppedLines& dropped, std::string& kept) {
  AppendOthers(lines, form, paths, dropped, kept);
}

}  // namespace carrovan
