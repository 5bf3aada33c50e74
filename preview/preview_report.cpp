#include "preview/preview_report.h"

#include <map>
#include <set>

#include "environment/string_table.h"
#include "registry_text/registry_file_parser.h"
#include "registry_text/registry_key.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr wchar_t kOther[] = L"Other";

class Sorter {
 public:
  Sorter(const RunReport& run, const CategoryPlaces& places) : places_(places) {
    for (const std::wstring& path : run.merged) merged_.insert(FoldedName(path));
  }

  void Take(const FileChange& change) {
    const bool replaced = change.change == Change::kReplaced;
    const bool isMerged = replaced && merged_.contains(FoldedName(change.path));
    PreviewedCategory& category = Of(places_.OfFile(change.path));
    category.files.push_back({change, isMerged});
    if (!change.isFolder) ++FileCount(category.summary, change.change, isMerged);
  }

  void Take(const KeyChange& change) {
    Of(places_.OfKey(change.hive, change.path)).keys.push_back(change);
  }

  void Take(const ValueChange& change) {
    PreviewedCategory& category = Of(places_.OfKey(change.hive, change.key));
    category.values.push_back(change);
    PreviewSummary& summary = category.summary;
    ++(!change.before  ? summary.valuesAdded
       : !change.after ? summary.valuesRemoved
                       : summary.valuesChanged);
  }

  void Take(const DroppedValue& value) {
    std::wstring_view key = value.key;
    const auto hive = HiveOfRoot(TakeKeyName(key));
    PreviewedCategory& category = Of(hive ? places_.OfKey(*hive, std::wstring(key)) : nullptr);
    category.dropped.push_back(value);
    ++category.summary.valuesDropped;
  }

  PreviewReport Report() {
    PreviewReport report;
    for (const CategoryRecord& record : CategoryTable()) {
      const auto found = byRecord_.find(&record);
      if (found == byRecord_.end()) continue;
      found->second.record = &record;
      found->second.label = Text(record.label);
      report.categories.push_back(std::move(found->second));
    }
    if (const auto other = byRecord_.find(nullptr); other != byRecord_.end()) {
      other->second.label = kOther;
      report.categories.push_back(std::move(other->second));
    }
    return report;
  }

 private:
  PreviewedCategory& Of(const CategoryRecord* record) { return byRecord_[record]; }

  static std::size_t& FileCount(PreviewSummary& summary, Change change, bool isMerged) {
    if (isMerged) return summary.filesMerged;
    switch (change) {
      case Change::kAdded:
        return summary.filesAdded;
      case Change::kReplaced:
        return summary.filesReplaced;
      default:
        return summary.filesRemoved;
    }
  }

  const CategoryPlaces& places_;
  std::set<std::u16string> merged_;
  std::map<const CategoryRecord*, PreviewedCategory> byRecord_;
};

}  // namespace

PreviewReport MakePreviewReport(const MachineChanges& changes, const RunReport& run,
                                const CategoryPlaces& places) {
  Sorter sorter(run, places);
  for (const FileChange& change : changes.files) sorter.Take(change);
  for (const KeyChange& change : changes.keys) sorter.Take(change);
  for (const ValueChange& change : changes.values) sorter.Take(change);
  for (const DroppedValue& value : run.dropped) sorter.Take(value);
  PreviewReport report = sorter.Report();
  report.paths = run.paths;
  return report;
}

}  // namespace carrovan
