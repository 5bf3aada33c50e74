#include "cli/preview_output.h"

#include <algorithm>
#include <utility>

#include "cli/json_text.h"
#include "cli/paths_output.h"
#include "registry_text/registry_file_writer.h"
#include "registry_text/registry_key.h"

namespace carrovan {
namespace {

using nlohmann::json;

// What a line shows of a value before it is cut.
constexpr std::size_t kShownCharacters = 80;

std::wstring_view WordOf(const PreviewedFile& file) {
  if (file.isMerged) return L"merged";
  constexpr std::wstring_view kWords[] = {L"added", L"replaced", L"removed"};
  return kWords[static_cast<std::size_t>(file.change.change)];
}

std::wstring_view WordOf(const ValueChange& change) {
  return !change.before ? L"added" : !change.after ? L"removed" : L"changed";
}

std::wstring_view WordOf(const KeyChange& change) {
  return change.change == Change::kAdded ? L"added" : L"removed";
}

// For people.

std::wstring Padded(std::wstring_view text, std::size_t width) {
  std::wstring padded(text);
  padded.resize(std::max(padded.size(), width), L' ');
  return padded;
}

// "1 file added", "2 files added"
std::wstring Counted(std::size_t count, std::wstring_view what) {
  const std::size_t noun = what.find(L' ');
  return std::to_wstring(count) + L" " + std::wstring(what.substr(0, noun)) +
         (count == 1 ? L"" : L"s") + std::wstring(what.substr(noun));
}

std::wstring SummaryText(const PreviewSummary& summary) {
  const std::pair<std::size_t, std::wstring_view> kCounts[] = {
      {summary.filesAdded, L"file added"},       {summary.filesReplaced, L"file replaced"},
      {summary.filesMerged, L"file merged"},     {summary.filesRemoved, L"file removed"},
      {summary.valuesAdded, L"value added"},     {summary.valuesChanged, L"value changed"},
      {summary.valuesRemoved, L"value removed"}, {summary.valuesDropped, L"value dropped"}};
  std::wstring text;
  for (const auto& [count, what] : kCounts) {
    if (count == 0) continue;
    text += (text.empty() ? L"" : L", ") + Counted(count, what);
  }
  return text.empty() ? L"folders and keys only" : text;
}

std::wstring Shown(const RegistryValue& value) {
  std::wstring text = RegistryValueText(value);
  if (text.size() <= kShownCharacters) return text;
  return text.substr(0, kShownCharacters) + L"... (" + std::to_wstring(text.size()) +
         L" characters)";
}

std::wstring ShownName(const std::wstring& name) { return name.empty() ? L"(default)" : name; }

std::wstring LineOf(const PreviewedFile& file) {
  const FileChange& change = file.change;
  std::wstring line = L"  " + Padded(WordOf(file), 8) + L" " + change.path;
  if (change.isFolder) return line + L"\\";
  if (change.change != Change::kAdded) return line;
  return line + L" (" + std::to_wstring(change.after.sizeBytes) + L" bytes)";
}

std::wstring LineOf(const ValueChange& change) {
  std::wstring line = L"  value " + Padded(WordOf(change), 7) + L" " +
                      FullKeyPath(change.hive, change.key) + L"  " + ShownName(change.name);
  if (change.before && change.after) {
    return line + L" from " + Shown(*change.before) + L" to " + Shown(*change.after);
  }
  return line + L" = " + Shown(change.before ? *change.before : *change.after);
}

std::wstring LineOf(const KeyChange& change) {
  return L"  key " + Padded(WordOf(change), 9) + L" " + FullKeyPath(change.hive, change.path);
}

std::wstring LineOf(const DroppedValue& value) {
  const std::wstring name = value.name.empty() ? L"" : L"  " + value.name;
  return L"  value dropped " + value.key + name + L": " + value.why;
}

template <typename Items>
void PrintLines(const Session& session, const Items& items) {
  for (const auto& item : items) session.Print(LineOf(item));
}

void PrintItems(const Session& session, const PreviewedCategory& category) {
  session.Print(L"");
  session.Print(category.label);
  PrintLines(session, category.files);
  PrintLines(session, category.keys);
  PrintLines(session, category.values);
  PrintLines(session, category.dropped);
}

// For programs.

json TextOrNull(const std::optional<RegistryValue>& value) {
  return value ? json(ToUtf8(RegistryValueText(*value))) : json();
}

json SizeOrNull(const FileImage& image) {
  return image.kind == FileKind::kFile ? json(image.sizeBytes) : json();
}

json ToJson(const PreviewSummary& summary) {
  return {{"filesAdded", summary.filesAdded},       {"filesReplaced", summary.filesReplaced},
          {"filesMerged", summary.filesMerged},     {"filesRemoved", summary.filesRemoved},
          {"valuesAdded", summary.valuesAdded},     {"valuesChanged", summary.valuesChanged},
          {"valuesRemoved", summary.valuesRemoved}, {"valuesDropped", summary.valuesDropped}};
}

json ToJson(const PreviewedFile& file) {
  return {{"path", ToUtf8(file.change.path)},
          {"change", ToUtf8(WordOf(file))},
          {"folder", file.change.isFolder},
          {"sizeBefore", SizeOrNull(file.change.before)},
          {"sizeAfter", SizeOrNull(file.change.after)}};
}

json ToJson(const KeyChange& change) {
  return {{"key", ToUtf8(FullKeyPath(change.hive, change.path))},
          {"change", ToUtf8(WordOf(change))}};
}

json ToJson(const ValueChange& change) {
  return {{"key", ToUtf8(FullKeyPath(change.hive, change.key))},
          {"name", ToUtf8(change.name)},
          {"change", ToUtf8(WordOf(change))},
          {"type", change.after ? change.after->type : change.before->type},
          {"before", TextOrNull(change.before)},
          {"after", TextOrNull(change.after)}};
}

json ToJson(const DroppedValue& value) {
  return {{"file", ToUtf8(value.file)},
          {"key", ToUtf8(value.key)},
          {"name", ToUtf8(value.name)},
          {"why", ToUtf8(value.why)}};
}

template <typename Items>
json ListOf(const Items& items) {
  json list = json::array();
  for (const auto& item : items) list.push_back(ToJson(item));
  return list;
}

}  // namespace

void PrintPreview(const Session& session, const PreviewReport& report, bool details) {
  for (const PreviewedCategory& category : report.categories) {
    session.Print(category.label + L": " + SummaryText(category.summary));
  }
  PrintImportedPathCounts(session, report.paths);
  if (report.categories.empty()) {
    return session.Print(L"Nothing was changed; a run would change nothing.");
  }
  if (!details) {
    return session.Print(
        L"Nothing was changed; a run would do the above, of which --details lists each item.");
  }
  for (const PreviewedCategory& category : report.categories) PrintItems(session, category);
  PrintImportedPaths(session, report.paths);
  session.Print(L"Nothing was changed; a run would do the above.");
}

json DroppedJson(const std::vector<DroppedValue>& dropped) { return ListOf(dropped); }

void PrintPreviewJson(const Session& session, const PreviewReport& report, json heading) {
  json categories = json::array();
  for (const PreviewedCategory& category : report.categories) {
    categories.push_back({{"label", ToUtf8(category.label)},
                          {"summary", ToJson(category.summary)},
                          {"files", ListOf(category.files)},
                          {"keys", ListOf(category.keys)},
                          {"values", ListOf(category.values)},
                          {"dropped", DroppedJson(category.dropped)}});
  }
  heading["categories"] = std::move(categories);
  PrintJsonText(session, heading);
}

}  // namespace carrovan
