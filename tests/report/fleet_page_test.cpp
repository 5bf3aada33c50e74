#include "report/fleet_page.h"

#include <gtest/gtest.h>

namespace carrovan {
namespace {

FleetAnswer Answer(FleetResult result, int exitStatus) {
  FleetAnswer answer;
  answer.number = 1;
  answer.user = L"ada";
  answer.exitStatus = exitStatus;
  answer.result = result;
  answer.document.restorePoint = L"2026-11-21T164406Z";
  answer.document.categories = {{L"Options", L"imported"}, {L"Shortcut key", L"left out"}};
  return answer;
}

FleetHost Host(const std::wstring& name, std::vector<FleetAnswer> answers) {
  FleetHost host;
  host.name = name;
  host.answers = std::move(answers);
  SetResult(host);
  return host;
}

// One of each result, the best first.
FleetReport MixedReport() {
  FleetReport report;
  report.job = L"import";
  report.hosts.push_back(Host(L"done", {Answer(FleetResult::kDone, 0)}));
  report.hosts.push_back(Host(L"partly", {Answer(FleetResult::kPartly, 3)}));
  report.hosts.push_back(Host(L"silent", {}));
  report.hosts.push_back(Host(L"odd", {Answer(FleetResult::kNotUnderstood, 0)}));
  report.hosts.push_back(Host(L"misused", {Answer(FleetResult::kUsage, 2)}));
  report.hosts.push_back(Host(L"failed", {Answer(FleetResult::kFailed, 1)}));
  return report;
}

bool Holds(const std::string& page, const std::string& part) {
  return page.find(part) != std::string::npos;
}

std::size_t CountOf(const std::string& text, const std::string& search) {
  std::size_t count = 0;
  for (auto at = text.find(search); at != std::string::npos; at = text.find(search, at + 1)) {
    ++count;
  }
  return count;
}

std::vector<std::wstring> HostsOf(const ReportPage& page) {
  std::vector<std::wstring> hosts;
  for (const ReportRow& row : page.table->rows) hosts.push_back(row.cells[0]);
  return hosts;
}

TEST(FleetReportTest, HostIsAsGoodAsItsWorstAnswer) {
  const FleetAnswer done = Answer(FleetResult::kDone, 0);
  EXPECT_EQ(Host(L"a", {done, Answer(FleetResult::kPartly, 3), done}).result, FleetResult::kPartly);
  EXPECT_EQ(Host(L"a", {Answer(FleetResult::kFailed, 1), Answer(FleetResult::kPartly, 3)}).result,
            FleetResult::kFailed);
  EXPECT_EQ(Host(L"a", {}).result, FleetResult::kNoAnswer);
  FleetHost host = Host(L"a", {done});
  host.failure = {L"unreachable"};
  SetResult(host);
  EXPECT_EQ(host.result, FleetResult::kFailed);
}

TEST(FleetReportTest, SumNamesOnlyTheResultsThatThereAre) {
  FleetReport report = MixedReport();
  EXPECT_EQ(SumOf(report),
            L"6 hosts: 1 done, 1 in part, 1 failed, 1 wrong usage, 1 no answer, 1 not understood");
  EXPECT_FALSE(IsAllDone(report));
  report.hosts.resize(1);
  EXPECT_EQ(SumOf(report), L"1 host: 1 done");
  EXPECT_TRUE(IsAllDone(report));
  report.hosts.clear();
  EXPECT_EQ(SumOf(report), L"0 hosts");
}

TEST(FleetReportTest, FirstReasonIsWhatTheRunCallsAProblem) {
  FleetAnswer answer = Answer(FleetResult::kPartly, 3);
  answer.errors = {L"a piece of advice", L"the problem"};
  EXPECT_EQ(FirstReason(answer), L"a piece of advice");
  answer.document.emptied = {L"Options"};
  EXPECT_EQ(FirstReason(answer), L"Options: the package holds nothing of it");
  answer.document.problems = {L"the problem"};
  EXPECT_EQ(FirstReason(answer), L"the problem");
  answer.problem = L"not understood";
  EXPECT_EQ(FirstReason(answer), L"not understood");
  answer.result = FleetResult::kDone;
  EXPECT_EQ(FirstReason(answer), L"");
}

TEST(FleetPageTest, HostsThatNeedAttentionComeFirst) {
  const ReportPage page = PageOfFleet(L"results", MixedReport(), L"p");
  EXPECT_EQ(HostsOf(page), (std::vector<std::wstring>{L"failed", L"misused", L"odd", L"silent",
                                                      L"partly", L"done"}));
  for (std::size_t i = 0; i < page.categories.size(); ++i) {
    EXPECT_EQ(page.categories[i].label, HostsOf(page)[i]);
    EXPECT_EQ(page.categories[i].isClosed, page.categories[i].label == L"done");
  }
}

TEST(FleetPageTest, BarsShowHostsByResultAndCategoriesByOutcome) {
  const std::string html = WritePage(PageOfFleet(L"results", MixedReport(), L"p"));
  EXPECT_TRUE(Holds(html, "<rect class=\"k-added\" x=\"0.000%\" width=\"16.666%\""));
  EXPECT_TRUE(Holds(html, "<i></i>1 wrong usage</span>"));
  EXPECT_TRUE(Holds(html, "<b><bdi>Options</bdi></b><svg"));
  EXPECT_TRUE(Holds(html, "<i></i>5 imported</span>"));
  EXPECT_TRUE(Holds(html, "<i></i>5 left out</span>"));
}

TEST(FleetPageTest, LineOfAnAnswerLeadsToItsHost) {
  FleetReport report = MixedReport();
  report.hosts[0].answers[0].document.droppedCount = 3;
  const ReportPage page = PageOfFleet(L"results", report, L"p");
  const ReportRow& done = page.table->rows.back();
  EXPECT_EQ(done.cells, (std::vector<std::wstring>{L"done", L"ada", L"0",
                                                   L"1 imported, 1 left out, 3 values dropped",
                                                   L"2026-11-21T164406Z", L""}));
  EXPECT_EQ(page.categories[done.category].label, L"done");
  const std::string html = WritePage(page);
  EXPECT_TRUE(Holds(html, "<tr class=\"k-added\" data-of=\"c5\" data-kind=\"done\">"));
  EXPECT_TRUE(Holds(html, "<a href=\"#c5\"><bdi>done</bdi></a>"));
}

TEST(FleetPageTest, SectionHoldsAllThatTheHostSaid) {
  FleetReport report;
  FleetAnswer answer = Answer(FleetResult::kPartly, 3);
  answer.document.problems = {L"a problem"};
  answer.document.differences = {L"a difference"};
  answer.document.emptied = {L"an emptied category"};
  answer.document.dropped = {{L"Options\\a.reg", L"HKEY\\a key", L"a value", L"its path is gone"}};
  answer.errors = {L"an error"};
  report.hosts.push_back(Host(L"ws01", {answer, answer}));
  report.hosts[0].failure = {L"why not", L"and more"};
  const std::string html = WritePage(PageOfFleet(L"results", report, L"p"));
  for (const char* kind :
       {"problem", "differs", "emptied", "dropped", "standard error", "failed"}) {
    EXPECT_TRUE(Holds(html, "data-kind=\"" + std::string(kind) + "\"><span class=\"kind\">"))
        << kind;
  }
  for (const char* text : {"a problem", "a difference", "an emptied category", "a key", "a value",
                           "its path is gone", "an error", "why not", "and more"}) {
    EXPECT_TRUE(Holds(html, text)) << text;
  }
}

TEST(FleetPageTest, TextsOfAHostStayText) {
  const std::wstring evil = L"</td></script><script>x</script><img src=x>\x202E\x1B";
  FleetReport report;
  report.job = evil;
  report.repeated = report.notAsked = {evil};
  FleetAnswer answer = Answer(FleetResult::kPartly, 3);
  answer.user = answer.problem = evil;
  answer.errors = answer.document.problems = answer.document.differences = {evil};
  answer.document.emptied = answer.document.kept = answer.document.removed = {evil};
  answer.document.categories = {{evil, evil}};
  answer.document.dropped = {{evil, evil, evil, evil}};
  answer.document.restorePoint = answer.document.version = answer.document.package = evil;
  FleetHost host = Host(evil, {answer, answer});
  host.failure = {evil, evil};
  report.hosts = {host, Host(evil, {})};
  report.hosts[1].note = evil;
  const std::string html = WritePage(PageOfFleet(evil, report, evil));
  EXPECT_EQ(CountOf(html, "<script"), 1u);
  EXPECT_EQ(CountOf(html, "</script"), 1u);
  EXPECT_EQ(CountOf(html, "<img"), 0u);
  EXPECT_EQ(CountOf(html, "\xE2\x80\xAE"), 0u);
  EXPECT_EQ(CountOf(html, "\x1B"), 0u);
  EXPECT_EQ(CountOf(html, "<tr"), CountOf(html, "</tr>"));
  EXPECT_GE(CountOf(html, "&lt;script&gt;"), 40u);
}

TEST(FleetPageTest, LargeFleetIsCutWithLinesThatSaySo) {
  FleetReport report;
  report.job = L"import";
  FleetAnswer failed = Answer(FleetResult::kFailed, 1);
  failed.errors.assign(250, L"e");
  failed.omittedErrors = 7;
  report.hosts.assign(5010, Host(L"done", {Answer(FleetResult::kDone, 0)}));
  report.hosts.back() = Host(L"last", {failed});
  const ReportPage page = PageOfFleet(L"results", report, L"p");
  EXPECT_EQ(page.table->rows.size(), 5000u);
  EXPECT_EQ(page.table->omitted, 10u);
  EXPECT_EQ(page.categories.front().label, L"last");
  EXPECT_EQ(page.categories.front().items.size(), 201u);
  EXPECT_EQ(page.categories.front().omitted, 57u);
  const std::string html = WritePage(page);
  EXPECT_TRUE(Holds(html, "57 more items are not shown."));
  EXPECT_TRUE(Holds(html, "10 more lines are not shown."));
}

}  // namespace
}  // namespace carrovan
