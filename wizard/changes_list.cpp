#include "wizard/changes_list.h"

#include <algorithm>
#include <utility>

#include "registry_text/registry_file_writer.h"
#include "registry_text/registry_key.h"
#include "text/text.h"

namespace carrovan {
namespace {

// What a line shows of a value before it is cut.
constexpr std::size_t kShownCharacters = 200;

std::wstring Shown(const RegistryValue& value) {
  // A character may have two units.
  const std::wstring text = RegistryValueText(value, 2 * (kShownCharacters + 1));
  return text.size() <= kShownCharacters ? text : text.substr(0, kShownCharacters) + L"…";
}

// The lines of one category.
class CategoryLines {
 public:
  CategoryLines(const PreviewedCategory& category, const TextSource& texts,
                std::vector<ListedLine>& lines)
      : category_(category), texts_(texts), lines_(lines) {}

  void Add(bool isEmptied) {
    lines_.push_back({0, Label() + L" – " + Numbers()});
    if (isEmptied) lines_.push_back({1, texts_.Text(StringId::kWouldBeEmptied)});
    for (const PreviewedFile& file : category_.files) Add(file);
    for (const KeyChange& key : category_.keys) {
      lines_.push_back(
          {1, texts_.Text(WordOf(key.change)) + L": " + FullKeyPath(key.hive, key.path)});
    }
    for (const ValueChange& value : category_.values) Add(value);
    for (const DroppedValue& value : category_.dropped) Add(value);
  }

 private:
  std::wstring Label() const {
    return category_.record == nullptr ? texts_.Text(StringId::kOtherChanges) : category_.label;
  }

  std::wstring Numbers() const {
    const PreviewSummary& summary = category_.summary;
    const std::pair<std::size_t, StringId> kCounts[] = {
        {summary.filesAdded, StringId::kFilesAdded},
        {summary.filesReplaced, StringId::kFilesReplaced},
        {summary.filesMerged, StringId::kFilesMerged},
        {summary.filesRemoved, StringId::kFilesRemoved},
        {summary.valuesAdded, StringId::kValuesAdded},
        {summary.valuesChanged, StringId::kValuesChanged},
        {summary.valuesRemoved, StringId::kValuesRemoved},
        {summary.valuesDropped, StringId::kValuesDropped}};
    std::wstring text;
    for (const auto& [count, id] : kCounts) {
      if (count == 0) continue;
      text += (text.empty() ? L"" : L", ") + texts_.Filled(id, {std::to_wstring(count)});
    }
    return text.empty() ? texts_.Text(StringId::kFoldersAndKeysOnly) : text;
  }

  static StringId WordOf(Change change) {
    switch (change) {
      case Change::kAdded:
        return StringId::kAdded;
      case Change::kReplaced:
        return StringId::kReplaced;
      default:
        return StringId::kRemoved;
    }
  }

  void Add(const PreviewedFile& file) {
    const StringId word = file.isMerged ? StringId::kMerged : WordOf(file.change.change);
    const wchar_t* end = file.change.isFolder ? L"\\" : L"";
    lines_.push_back({1, texts_.Text(word) + L": " + file.change.path + end});
  }

  void Add(const ValueChange& value) {
    const StringId word = !value.before  ? StringId::kAdded
                          : !value.after ? StringId::kRemoved
                                         : StringId::kChanged;
    lines_.push_back(
        {1, texts_.Text(word) + L": " + FullKeyPath(value.hive, value.key) + L"  " +
                (value.name.empty() ? texts_.Text(StringId::kDefaultValue) : value.name)});
    std::wstring content = value.before ? Shown(*value.before) : L"";
    if (value.after) content += (value.before ? L" → " : L"") + Shown(*value.after);
    lines_.push_back({2, content});
  }

  void Add(const DroppedValue& value) {
    lines_.push_back({1, texts_.Text(StringId::kDropped) + L": " + value.key +
                             (value.name.empty() ? L"" : L"  " + value.name)});
    lines_.push_back({2, value.why});
  }

  const PreviewedCategory& category_;
  const TextSource& texts_;
  std::vector<ListedLine>& lines_;
};

}  // namespace

std::vector<ListedLine> ListChanges(const PreviewReport& report, const CategorySet& emptied,
                                    const TextSource& texts) {
  std::vector<ListedLine> lines;
  for (const PreviewedCategory& category : report.categories) {
    const bool isEmptied =
        category.record != nullptr && emptied.contains(category.record->category);
    CategoryLines(category, texts, lines).Add(isEmptied);
  }
  return lines;
}

std::string ListAsFile(const std::wstring& heading, const std::vector<ListedLine>& lines) {
  std::wstring text = L"\xFEFF" + heading + L"\r\n\r\n";
  for (const ListedLine& line : lines) {
    text += std::wstring(static_cast<std::size_t>(line.level) * 2, L' ') + line.text + L"\r\n";
  }
  return ToUtf8(text);
}

}  // namespace carrovan
