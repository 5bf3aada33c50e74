#include "report/run_page.h"

#include <algorithm>
#include <utility>

#include "environment/string_table.h"
#include "registry_text/registry_file_writer.h"
#include "registry_text/registry_key.h"
#include "text/path_text.h"

namespace carrovan {
namespace {

// More documents than any version has.
constexpr std::size_t kMostTrees = 60;

std::wstring Padded(long long number) {
  return (number < 10 ? L"0" : L"") + std::to_wstring(number);
}

std::wstring TitleOf(const std::wstring& verb) {
  if (verb == L"import") return L"Import";
  if (verb == L"reset") return L"Reset";
  return L"Undo";
}

std::wstring SizeText(const FileImage& image) {
  return std::to_wstring(image.sizeBytes) + (image.sizeBytes == 1 ? L" byte" : L" bytes");
}

std::wstring SizesText(const FileChange& change) {
  std::wstring text;
  for (const FileImage& image : {change.before, change.after}) {
    if (image.kind != FileKind::kFile) continue;
    text += (text.empty() ? L"" : L" \x2192 ") + SizeText(image);
  }
  return text;
}

ItemKind KindOf(const PreviewedFile& file) {
  if (file.isMerged) return ItemKind::kMerged;
  constexpr ItemKind kKinds[] = {ItemKind::kAdded, ItemKind::kReplaced, ItemKind::kRemoved};
  return kKinds[static_cast<std::size_t>(file.change.change)];
}

ReportItem ItemOf(const PreviewedFile& file, const SeenChanges& seen) {
  const FileChange& change = file.change;
  ReportItem item;
  item.kind = KindOf(file);
  item.what = change.isFolder ? L"folder" : L"file";
  item.counts = !change.isFolder;
  item.place = RemoveFileSpec(change.path);
  item.name = FileNameOf(change.path);
  if (!change.isFolder) item.note = SizesText(change);
  if (const auto tree = seen.trees.find(change.path); tree != seen.trees.end()) {
    item.tree = tree->second;
  }
  return item;
}

ReportItem ItemOf(const KeyChange& change) {
  ReportItem item;
  item.kind = change.change == Change::kAdded ? ItemKind::kAdded : ItemKind::kRemoved;
  item.what = L"key";
  item.counts = false;
  item.name = FullKeyPath(change.hive, change.path);
  return item;
}

ReportItem ItemOf(const ValueChange& change) {
  ReportItem item;
  item.kind = !change.before  ? ItemKind::kAdded
              : !change.after ? ItemKind::kRemoved
                              : ItemKind::kChanged;
  item.what = L"value";
  item.place = FullKeyPath(change.hive, change.key);
  item.name = change.name.empty() ? L"(default)" : change.name;
  if (change.before) item.before = RegistryValueText(*change.before);
  if (change.after) item.after = RegistryValueText(*change.after);
  return item;
}

ReportItem ItemOf(const DroppedValue& value) {
  ReportItem item;
  item.kind = ItemKind::kDropped;
  item.what = value.name.empty() ? L"key" : L"value";
  item.place = value.name.empty() ? L"" : value.key;
  item.name = value.name.empty() ? value.key : value.name;
  item.note = value.why;
  return item;
}

std::wstring NoteOf(PathState state) {
  constexpr std::wstring_view kNotes[] = {L"exists here", L"does not exist here",
                                          L"does not answer here", L"depends on a variable"};
  return std::wstring(kNotes[static_cast<std::size_t>(state)]);
}

// A dropped one stands among its category's values.
ReportItem ItemOf(const ImportedPath& path) {
  ReportItem item;
  item.kind = path.fate == PathFate::kMapped ? ItemKind::kMapped : ItemKind::kKept;
  item.what = L"path";
  item.place = path.key.empty() ? path.file : path.key;
  item.name = path.key.empty()    ? L"line " + std::to_wstring(path.line)
              : path.name.empty() ? L"(default)"
                                  : path.name;
  if (!path.was.empty()) item.before = path.was;
  item.after = path.path;
  item.note = NoteOf(path.state);
  return item;
}

void AddPaths(const std::vector<ImportedPath>& paths, std::vector<ReportCategory>& categories) {
  ReportCategory category{L"Paths in the package", {}};
  for (const ImportedPath& path : paths) {
    if (path.fate != PathFate::kDropped) category.items.push_back(ItemOf(path));
  }
  if (!category.items.empty()) categories.push_back(std::move(category));
}

std::vector<ReportCategory> CategoriesOf(const SeenChanges& seen) {
  std::vector<ReportCategory> categories;
  for (const PreviewedCategory& from : seen.preview.categories) {
    ReportCategory& to = categories.emplace_back();
    to.label = from.label;
    for (const PreviewedFile& file : from.files) to.items.push_back(ItemOf(file, seen));
    for (const KeyChange& change : from.keys) to.items.push_back(ItemOf(change));
    for (const ValueChange& change : from.values) to.items.push_back(ItemOf(change));
    for (const DroppedValue& value : from.dropped) to.items.push_back(ItemOf(value));
  }
  AddPaths(seen.preview.paths, categories);
  return categories;
}

ReportPage PageFor(const RunFacts& facts) {
  ReportPage page;
  page.title = TitleOf(facts.about.verb);
  const bool isImport = facts.about.verb == L"import";
  page.subject = isImport ? FileNameOf(facts.about.package) : facts.about.version;
  page.facts = {{L"Package", facts.about.package}};
  page.program = facts.program;
  return page;
}

void AddTime(const RunFacts& facts, ReportPage& page) {
  page.facts.push_back({L"Time of this machine", ReadableTime(facts.time)});
}

void SetResult(const RunFacts& facts, bool isWhole, ReportPage& page) {
  if (facts.dryRun) {
    page.result = ReportResult::kTrial;
    page.resultText = L"Tried out only: nothing was changed";
    page.itemsHeading = L"What would change";
    page.nothing = L"Nothing would change.";
    return;
  }
  page.result = isWhole ? ReportResult::kDone : ReportResult::kPartly;
  page.resultText = isWhole ? L"Done" : L"Done in part";
  page.itemsHeading = L"What changed";
  page.nothing = L"Nothing was changed.";
}

void SetRefused(const std::vector<std::wstring>& refusals, ReportPage& page) {
  page.result = ReportResult::kRefused;
  page.resultText = L"Refused: nothing was changed";
  page.lines.push_back({L"Why", refusals});
}

std::vector<std::wstring> ProblemsOf(const RunReport& report) {
  std::vector<std::wstring> lines;
  for (const std::wstring& path : report.unextracted) lines.push_back(TextOfUnextracted(path));
  lines.insert(lines.end(), report.problems.begin(), report.problems.end());
  return lines;
}

std::vector<std::wstring> NoticesOf(const RunOutcome& outcome) {
  std::vector<std::wstring> lines = outcome.notices;
  for (std::wstring& line : lines) std::ranges::replace(line, L'\n', L' ');
  for (const SettingCategory category : outcome.report.emptied) {
    lines.push_back(std::wstring(Text(FindCategory(static_cast<int>(category))->label)) +
                    L": the package holds nothing of it");
  }
  return lines;
}

std::wstring ReadBackText(const GuardReport& report) {
  return std::to_wstring(report.foreseen) + L" items, " +
         std::to_wstring(report.differences.size()) + L" not as they were to become";
}

}  // namespace

std::wstring ReadableTime(std::chrono::system_clock::time_point time) {
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(std::chrono::floor<std::chrono::seconds>(time - day));
  return std::to_wstring(static_cast<int>(date.year())) + L"-" +
         Padded(static_cast<unsigned>(date.month())) + L"-" +
         Padded(static_cast<unsigned>(date.day())) + L" " + Padded(clock.hours().count()) + L":" +
         Padded(clock.minutes().count()) + L":" + Padded(clock.seconds().count()) + L" UTC";
}

SeenChanges LookAt(const Trial& trial) {
  SeenChanges seen;
  seen.preview = MakePreviewReport(trial.changes, trial.outcome.report,
                                   CategoryPlaces(trial.outcome.context, trial.before));
  for (const PreviewedCategory& category : seen.preview.categories) {
    for (const PreviewedFile& file : category.files) {
      if (!file.isMerged || seen.trees.size() == kMostTrees) continue;
      const std::wstring& path = file.change.path;
      seen.trees.emplace(path, CompareDocuments(path, *trial.before.files, *trial.after.files));
    }
  }
  return seen;
}

ReportPage PageOfRefusal(const RunFacts& facts, const std::vector<std::wstring>& refusals) {
  ReportPage page = PageFor(facts);
  page.facts.push_back({L"Version", facts.about.version});
  AddTime(facts, page);
  SetRefused(refusals, page);
  return page;
}

ReportPage PageOfRun(const RunFacts& facts, const GuardReport& report, const SeenChanges& changes) {
  const RunOutcome& outcome = report.outcome;
  if (!outcome.refusals.empty()) return PageOfRefusal(facts, outcome.refusals);
  ReportPage page = PageFor(facts);
  page.facts.push_back({L"From version", outcome.packageVersion});
  page.facts.push_back(
      {outcome.packageVersion.empty() ? L"Version" : L"To version", facts.about.version});
  AddTime(facts, page);
  SetResult(facts, outcome.report.IsComplete() && report.differences.empty(), page);
  page.facts.push_back({L"Restore point", report.restorePoint});
  if (facts.verified) page.facts.push_back({L"Read back", ReadBackText(report)});
  if (outcome.report.optionsSet) {
    page.facts.push_back({L"Options set", std::to_wstring(*outcome.report.optionsSet)});
  }
  page.lines = {{L"What was not done", ProblemsOf(outcome.report)},
                {L"Not as it was to become", report.differences},
                {L"Worth knowing", NoticesOf(outcome)}};
  page.categories = CategoriesOf(changes);
  return page;
}

namespace {

ReportPage PageForUndo(const RunFacts& facts, const std::wstring& point) {
  ReportPage page = PageFor(facts);
  page.title = L"Undo of";
  page.subject = facts.about.verb + L" " + facts.about.version;
  page.facts.push_back({L"Version", facts.about.version});
  page.facts.push_back({L"Restore point", point});
  AddTime(facts, page);
  return page;
}

}  // namespace

ReportPage PageOfUndo(const RunFacts& facts, const std::wstring& point, const UndoReport& report,
                      const PreviewReport& changes) {
  ReportPage page = PageForUndo(facts, point);
  SetResult(facts, report.IsComplete(), page);
  page.facts.push_back(
      {facts.dryRun ? L"To be put back" : L"Put back", std::to_wstring(report.restored)});
  page.lines = {{L"Kept, since it was changed after the run", report.kept},
                {L"What was not put back", report.problems}};
  page.categories = CategoriesOf({changes, {}});
  return page;
}

ReportPage PageOfRefusedUndo(const RunFacts& facts, const std::wstring& point,
                             const std::wstring& reason) {
  ReportPage page = PageForUndo(facts, point);
  SetRefused({reason}, page);
  return page;
}

}  // namespace carrovan
