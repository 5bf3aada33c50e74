#include "report/fleet_page.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

#include "environment/setting_category.h"
#include "report/page_markup.h"

namespace carrovan {
namespace {

// Of the table, and so of the hosts that a page shows: a browser has to keep up with it.
constexpr std::size_t kMostRows = 5000;

// Of all hosts together, and of each list of one answer.
constexpr std::size_t kMostItems = 20000;
constexpr std::size_t kMostOfOneList = 200;

ItemKind KindOf(FleetResult result) {
  constexpr ItemKind kKinds[] = {ItemKind::kDone,  ItemKind::kPartly,   ItemKind::kFailed,
                                 ItemKind::kUsage, ItemKind::kNoAnswer, ItemKind::kNotUnderstood};
  return kKinds[static_cast<std::size_t>(result)];
}

// What the program calls the outcomes of categories; a host may name any other.
std::optional<ItemKind> KindOfOutcome(const std::wstring& outcome) {
  static const std::map<std::wstring_view, ItemKind> kKinds{{L"imported", ItemKind::kImported},
                                                            {L"reset", ItemKind::kReset},
                                                            {L"stored", ItemKind::kStored},
                                                            {L"left out", ItemKind::kLeftOut},
                                                            {L"kept", ItemKind::kKept},
                                                            {L"empty", ItemKind::kEmpty},
                                                            {L"not stored", ItemKind::kNotStored},
                                                            {L"would change", ItemKind::kChanged}};
  const auto found = kKinds.find(outcome);
  return found == kKinds.end() ? std::nullopt : std::optional(found->second);
}

// The numbers of a summary's line by kind.
using KindCounts = std::map<ItemKind, std::size_t>;

ReportTotal TotalOf(std::wstring label, const KindCounts& counts) {
  return {std::move(label), {counts.begin(), counts.end()}};
}

// Labels of a document in the order of the tree; those that are none of the program's do not count.
std::map<int, KindCounts> CategoryCounts(const FleetReport& report) {
  std::map<int, KindCounts> counts;
  for (const FleetHost& host : report.hosts) {
    for (const FleetAnswer& answer : host.answers) {
      for (const FleetCategory& category : answer.document.categories) {
        const CategoryRecord* const record = FindCategoryByLabel(category.label);
        const auto kind = KindOfOutcome(category.outcome);
        if (record != nullptr && kind) ++counts[static_cast<int>(record->category)][*kind];
      }
    }
  }
  return counts;
}

std::vector<ReportTotal> TotalsOfPage(const FleetReport& report) {
  KindCounts hosts;
  KindCounts answers;
  std::size_t answerCount = 0;
  for (const FleetHost& host : report.hosts) {
    ++hosts[KindOf(host.result)];
    for (const FleetAnswer& answer : host.answers) ++answers[KindOf(answer.result)];
    answerCount += host.answers.size();
  }
  std::vector<ReportTotal> totals{TotalOf(L"Hosts", hosts)};
  if (answerCount != report.hosts.size()) totals.push_back(TotalOf(L"Users", answers));
  for (const auto& [category, counts] : CategoryCounts(report)) {
    totals.push_back(TotalOf(std::wstring(Text(FindCategory(category)->label)), counts));
  }
  return totals;
}

// Labels by what became of them, in the order in which the outcomes came.
std::vector<std::pair<std::wstring, std::vector<std::wstring>>> ByOutcome(
    const FleetDocument& document) {
  std::vector<std::pair<std::wstring, std::vector<std::wstring>>> outcomes;
  for (const FleetCategory& category : document.categories) {
    auto found = std::ranges::find(outcomes, category.outcome,
                                   [](const auto& outcome) { return outcome.first; });
    if (found == outcomes.end()) {
      constexpr std::size_t kMostOutcomes = 10;
      if (outcomes.size() == kMostOutcomes) continue;
      found = outcomes.insert(outcomes.end(), {category.outcome, {}});
    }
    found->second.push_back(category.label);
  }
  return outcomes;
}

std::wstring Joined(const std::vector<std::wstring>& texts) {
  std::wstring joined;
  for (const std::wstring& text : texts) joined += (joined.empty() ? L"" : L", ") + text;
  return joined;
}

std::wstring Counted(std::size_t count, const std::wstring& one, const std::wstring& several) {
  return std::to_wstring(count) + L" " + (count == 1 ? one : several);
}

// "11 imported, 2 left out, 3 values dropped"
std::wstring BriefOf(const FleetDocument& document) {
  std::vector<std::wstring> parts;
  for (const auto& [outcome, labels] : ByOutcome(document)) {
    parts.push_back(std::to_wstring(labels.size()) + L" " + outcome);
  }
  if (document.droppedCount > 0) {
    parts.push_back(Counted(document.droppedCount, L"value dropped", L"values dropped"));
  }
  if (!document.removed.empty()) {
    parts.push_back(Counted(document.removed.size(), L"point removed", L"points removed"));
  }
  if (document.dryRun) parts.emplace_back(L"tried out only");
  return Joined(parts);
}

std::wstring StatusText(const FleetAnswer& answer) {
  return answer.exitStatus ? std::to_wstring(*answer.exitStatus) : L"";
}

std::wstring NameOf(const FleetAnswer& answer) {
  return answer.user.empty() ? L"user " + std::to_wstring(answer.number) : answer.user;
}

ReportItem Item(ItemKind kind, std::wstring name, const wchar_t* what) {
  ReportItem item;
  item.kind = kind;
  item.name = std::move(name);
  item.what = what;
  return item;
}

// The section of one host.
class HostSection {
 public:
  HostSection(const FleetHost& host, std::size_t room) : host_(host), room_(room) {}

  ReportCategory Make() {
    category_.label = host_.name;
    category_.isClosed = host_.result == FleetResult::kDone;
    AddFailure();
    for (const FleetAnswer& answer : host_.answers) AddAnswer(answer);
    return std::move(category_);
  }

 private:
  void Add(ReportItem item) {
    item.place = place_;
    category_.items.push_back(std::move(item));
  }

  // As much of a list as the page has room for.
  template <typename Items, typename Make>
  void AddList(const Items& items, const Make& make) {
    const std::size_t used = category_.items.size();
    const std::size_t most = std::min(kMostOfOneList, room_ > used ? room_ - used : 0);
    const std::size_t shown = std::min(items.size(), most);
    for (std::size_t i = 0; i < shown; ++i) Add(make(items[i]));
    category_.omitted += items.size() - shown;
  }

  void AddTexts(const std::vector<std::wstring>& texts, ItemKind kind, const wchar_t* what) {
    AddList(texts, [&](const std::wstring& text) { return Item(kind, text, what); });
  }

  void AddFailure() {
    if (host_.failure.empty() && !host_.answers.empty()) return;
    ReportItem item = Item(KindOf(host_.failure.empty() ? host_.result : FleetResult::kFailed),
                           host_.failure.empty() ? L"No answer" : host_.failure.front(), L"");
    if (host_.failure.empty()) item.note = host_.note;
    Add(std::move(item));
    if (host_.failure.empty()) return;
    const std::vector<std::wstring> further(host_.failure.begin() + 1, host_.failure.end());
    AddTexts(further, ItemKind::kFailed, L"");
  }

  void AddAnswer(const FleetAnswer& answer) {
    place_ = host_.answers.size() > 1 ? NameOf(answer) : L"";
    AddResult(answer);
    const FleetDocument& document = answer.document;
    AddTexts(document.problems, ItemKind::kProblem, L"");
    AddTexts(document.differences, ItemKind::kDiffers, L"");
    AddTexts(document.emptied, ItemKind::kEmptied, L"category");
    AddTexts(document.kept, ItemKind::kKept, L"");
    AddTexts(document.removed, ItemKind::kRemoved, L"restore point");
    AddList(document.dropped, [](const DroppedValue& value) {
      ReportItem item = Item(ItemKind::kDropped, value.key, L"");
      if (!value.name.empty()) item.facts.push_back({L"value", value.name});
      item.note = value.why;
      return item;
    });
    AddTexts(answer.errors, ItemKind::kStandardError, L"");
    category_.omitted += document.omitted + answer.omittedErrors;
  }

  void AddResult(const FleetAnswer& answer) {
    const FleetDocument& document = answer.document;
    ReportItem item = Item(KindOf(answer.result), NameOf(answer), L"");
    item.note = answer.problem;
    item.facts = {{L"Exit status", StatusText(answer)},
                  {L"Version", document.version},
                  {L"Package", document.package},
                  {L"Restore point", document.restorePoint}};
    for (const auto& [outcome, labels] : ByOutcome(document)) {
      item.facts.push_back({outcome, Joined(labels)});
    }
    Add(std::move(item));
  }

  const FleetHost& host_;
  const std::size_t room_;
  std::wstring place_;
  ReportCategory category_;
};

// The hosts as the page shows them: those first that need attention.
std::vector<const FleetHost*> InOrder(const FleetReport& report) {
  std::vector<const FleetHost*> hosts;
  for (const FleetHost& host : report.hosts) hosts.push_back(&host);
  std::ranges::stable_sort(
      hosts, [](const FleetHost* a, const FleetHost* b) { return IsWorse(a->result, b->result); });
  return hosts;
}

void AddRows(const FleetHost& host, std::size_t category, std::vector<ReportRow>& rows) {
  if (host.answers.empty() || !host.failure.empty()) {
    rows.push_back(
        {KindOf(host.result), category, {host.name, L"", L"", L"", L"", FirstReason(host)}});
  }
  for (const FleetAnswer& answer : host.answers) {
    rows.push_back({KindOf(answer.result),
                    category,
                    {host.name, answer.user, StatusText(answer), BriefOf(answer.document),
                     answer.document.restorePoint, FirstReason(answer)}});
  }
}

void AddHosts(const FleetReport& report, ReportPage& page) {
  ReportTable table;
  table.heading = L"Hosts";
  table.columns = {L"Host", L"User", L"Exit status", L"What was done", L"Restore point", L"Reason"};
  std::size_t room = kMostItems;
  for (const FleetHost* const host : InOrder(report)) {
    if (table.rows.size() >= kMostRows) {
      ++table.omitted;
      continue;
    }
    AddRows(*host, page.categories.size(), table.rows);
    page.categories.push_back(HostSection(*host, room).Make());
    room -= std::min(room, page.categories.back().items.size());
  }
  if (!table.rows.empty()) page.table = std::move(table);
}

}  // namespace

ReportPage PageOfFleet(const std::wstring& folder, const FleetReport& report,
                       const std::wstring& program) {
  ReportPage page;
  page.title = L"Fleet";
  page.subject = report.job;
  const bool isDone = IsAllDone(report);
  page.result = isDone ? ReportResult::kDone : ReportResult::kPartly;
  page.resultText = SumOf(report);
  page.facts = {{L"Job", report.job}, {L"Collected in", folder}};
  page.lines = {{L"Hosts that were named more than once", report.repeated},
                {L"Folders of hosts that were not asked", report.notAsked}};
  page.totals = TotalsOfPage(report);
  page.itemsHeading = L"What each host answered";
  page.nothing = L"No host was asked.";
  page.categoryWord = L"Host";
  page.allCategories = L"All hosts";
  AddHosts(report, page);
  page.program = program;
  return page;
}

}  // namespace carrovan
