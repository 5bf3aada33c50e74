#include "report/fleet_report.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>

namespace carrovan {
namespace {

struct ResultLook {
  std::wstring_view word;
  std::wstring_view inSum;
  int urgency;
};

constexpr std::array<ResultLook, kFleetResults> kLooks{{{L"done", L"done", 0},
                                                        {L"done in part", L"in part", 1},
                                                        {L"failed", L"failed", 5},
                                                        {L"wrong usage", L"wrong usage", 4},
                                                        {L"no answer", L"no answer", 2},
                                                        {L"not understood", L"not understood", 3}}};

const ResultLook& LookOf(FleetResult result) { return kLooks[static_cast<std::size_t>(result)]; }

std::wstring FirstOf(std::initializer_list<const std::vector<std::wstring>*> lists) {
  for (const std::vector<std::wstring>* const list : lists) {
    if (!list->empty()) return list->front();
  }
  return {};
}

}  // namespace

std::wstring WordOf(FleetResult result) { return std::wstring(LookOf(result).word); }

bool IsWorse(FleetResult a, FleetResult b) { return LookOf(a).urgency > LookOf(b).urgency; }

std::array<std::size_t, kFleetResults> TotalsOf(const FleetReport& report) {
  std::array<std::size_t, kFleetResults> totals{};
  for (const FleetHost& host : report.hosts) ++totals[static_cast<std::size_t>(host.result)];
  return totals;
}

std::wstring SumOf(const FleetReport& report) {
  const auto totals = TotalsOf(report);
  std::wstring sum =
      std::to_wstring(report.hosts.size()) + (report.hosts.size() == 1 ? L" host" : L" hosts");
  std::wstring_view between = L": ";
  for (std::size_t i = 0; i < totals.size(); ++i) {
    if (totals[i] == 0) continue;
    sum.append(between).append(std::to_wstring(totals[i])).append(L" ").append(kLooks[i].inSum);
    between = L", ";
  }
  return sum;
}

bool IsAllDone(const FleetReport& report) {
  return std::ranges::all_of(
      report.hosts, [](const FleetHost& host) { return host.result == FleetResult::kDone; });
}

// Standard error comes last: of a run that is done in part it may begin with a piece of advice.
std::wstring FirstReason(const FleetAnswer& answer) {
  if (answer.result == FleetResult::kDone) return {};
  if (!answer.problem.empty()) return answer.problem;
  const FleetDocument& document = answer.document;
  if (document.problems.empty() && !document.emptied.empty()) {
    return document.emptied.front() + L": the package holds nothing of it";
  }
  return FirstOf({&document.problems, &document.differences, &document.kept, &answer.errors});
}

std::wstring FirstReason(const FleetHost& host) {
  if (!host.failure.empty()) return host.failure.front();
  if (host.answers.empty()) return host.note;
  const auto worst = std::ranges::find_if(
      host.answers, [&](const FleetAnswer& answer) { return answer.result == host.result; });
  return worst == host.answers.end() ? std::wstring() : FirstReason(*worst);
}

void SetResult(FleetHost& host) {
  host.result = FleetResult::kNoAnswer;
  if (!host.answers.empty()) {
    host.result = std::ranges::max_element(host.answers, [](const auto& a, const auto& b) {
                    return IsWorse(b.result, a.result);
                  })->result;
  }
  if (!host.failure.empty()) host.result = FleetResult::kFailed;
}

}  // namespace carrovan
