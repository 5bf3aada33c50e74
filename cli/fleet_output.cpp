#include "cli/fleet_output.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "cli/json_text.h"
#include "cli/preview_output.h"
#include "cli/visible_text.h"

namespace carrovan {
namespace {

using nlohmann::json;

// Columns do not grow with what a host calls itself.
constexpr std::size_t kWidestColumn = 40;
constexpr std::size_t kShownUsers = 4;

using Line = std::vector<std::wstring>;

std::wstring UsersOf(const FleetHost& host) {
  std::wstring users;
  std::size_t left = 0;
  std::size_t shown = 0;
  for (const FleetAnswer& answer : host.answers) {
    if (answer.user.empty()) continue;
    if (shown == kShownUsers) {
      ++left;
      continue;
    }
    users += (shown++ > 0 ? L", " : L"") + VisibleValue(answer.user);
  }
  return left == 0 ? users : users + L" and " + std::to_wstring(left) + L" more";
}

// Each status once, in the order in which they came.
std::wstring StatusesOf(const FleetHost& host) {
  std::vector<int> statuses;
  for (const FleetAnswer& answer : host.answers) {
    if (!answer.exitStatus) continue;
    if (std::ranges::find(statuses, *answer.exitStatus) != statuses.end()) continue;
    statuses.push_back(*answer.exitStatus);
  }
  std::wstring text;
  for (const int status : statuses) {
    text += (text.empty() ? L"" : L", ") + std::to_wstring(status);
  }
  return text.empty() ? L"-" : text;
}

Line LineOf(const FleetHost& host) {
  return {VisibleValue(host.name), UsersOf(host), WordOf(host.result), StatusesOf(host),
          VisibleValue(FirstReason(host))};
}

std::vector<std::size_t> WidthsOf(const std::vector<Line>& lines) {
  std::vector<std::size_t> widths;
  for (const Line& line : lines) {
    widths.resize(line.size(), 0);
    for (std::size_t i = 0; i < line.size(); ++i) {
      widths[i] = std::max(widths[i], std::min(line[i].size(), kWidestColumn));
    }
  }
  return widths;
}

// The last column ends with its text.
std::wstring Aligned(const Line& line, const std::vector<std::size_t>& widths) {
  std::wstring text;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (widths[i] == 0) continue;
    std::wstring cell = line[i];
    cell.resize(std::max(cell.size(), widths[i]), L' ');
    text += (text.empty() ? L"" : L"  ") + cell;
  }
  return text.substr(0, text.find_last_not_of(L' ') + 1);
}

json TextOrNull(const std::wstring& text) { return text.empty() ? json() : json(ToUtf8(text)); }

json ToJson(const std::vector<FleetCategory>& categories) {
  json list = json::array();
  for (const FleetCategory& category : categories) {
    list.push_back({{"label", ToUtf8(category.label)}, {"outcome", ToUtf8(category.outcome)}});
  }
  return list;
}

json ToJson(const FleetAnswer& answer) {
  const FleetDocument& document = answer.document;
  return {{"number", answer.number},
          {"user", TextOrNull(answer.user)},
          {"exitStatus", answer.exitStatus ? json(*answer.exitStatus) : json()},
          {"result", ToUtf8(WordOf(answer.result))},
          {"reason", TextOrNull(FirstReason(answer))},
          {"errors", TextsToJson(answer.errors)},
          {"verb", TextOrNull(document.verb)},
          {"version", TextOrNull(document.version)},
          {"package", TextOrNull(document.package)},
          {"restorePoint", TextOrNull(document.restorePoint)},
          {"dryRun", document.dryRun},
          {"categories", ToJson(document.categories)},
          {"problems", TextsToJson(document.problems)},
          {"dropped", DroppedJson(document.dropped)},
          {"emptied", TextsToJson(document.emptied)},
          {"differences", TextsToJson(document.differences)},
          {"kept", TextsToJson(document.kept)},
          {"removed", TextsToJson(document.removed)},
          {"omitted", document.omitted + answer.omittedErrors}};
}

json ToJson(const FleetHost& host) {
  json answers = json::array();
  for (const FleetAnswer& answer : host.answers) answers.push_back(ToJson(answer));
  return {{"host", ToUtf8(host.name)},
          {"result", ToUtf8(WordOf(host.result))},
          {"reason", TextOrNull(FirstReason(host))},
          {"failure", TextsToJson(host.failure)},
          {"answers", answers}};
}

json TotalsJson(const FleetReport& report) {
  constexpr const char* kNames[] = {"done",       "inPart",   "failed",
                                    "wrongUsage", "noAnswer", "notUnderstood"};
  json totals = {{"hosts", report.hosts.size()}};
  const auto counts = TotalsOf(report);
  for (std::size_t i = 0; i < counts.size(); ++i) totals[kNames[i]] = counts[i];
  return totals;
}

void PrintNames(const Session& session, const std::wstring& what,
                const std::vector<std::wstring>& names) {
  for (const std::wstring& name : names) session.Print(what + VisibleValue(name));
}

}  // namespace

void PrintFleet(const Session& session, const FleetReport& report) {
  std::vector<Line> lines;
  for (const FleetHost& host : report.hosts) lines.push_back(LineOf(host));
  const std::vector<std::size_t> widths = WidthsOf(lines);
  for (const Line& line : lines) session.Print(Aligned(line, widths));
  PrintNames(session, L"Named more than once: ", report.repeated);
  PrintNames(session, L"Not asked: ", report.notAsked);
  session.Print(SumOf(report));
}

// In ASCII, so that no mark of direction and no control character of the upper range is printed.
void PrintFleetJson(const Session& session, const FleetReport& report, ExitStatus status) {
  json hosts = json::array();
  for (const FleetHost& host : report.hosts) hosts.push_back(ToJson(host));
  const json document = {{"verb", "fleet"},
                         {"job", ToUtf8(report.job)},
                         {"exitStatus", static_cast<int>(status)},
                         {"hosts", std::move(hosts)},
                         {"repeated", TextsToJson(report.repeated)},
                         {"notAsked", TextsToJson(report.notAsked)},
                         {"totals", TotalsJson(report)}};
  session.Print(FromUtf8(document.dump(2, ' ', true, json::error_handler_t::replace)));
}

}  // namespace carrovan
