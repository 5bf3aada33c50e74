#include "cli/fleet_verb.h"

#include <algorithm>
#include <set>
#include <utility>

#include "cli/fleet_output.h"
#include "cli/report_output.h"
#include "report/fleet_folder.h"
#include "report/fleet_page.h"
#include "report/page_markup.h"
#include "text/text.h"

namespace carrovan {
namespace {

constexpr wchar_t kListName[] = L"fleet.json";

// What is shown of an answer that is no document.
constexpr std::size_t kShownOfNoDocument = 120;

constexpr wchar_t kNoDocument[] =
    L"it answered with something other than a document of carrovan-cli";

bool IsBlank(const std::string& bytes) {
  return bytes.find_first_not_of(" \t\r\n") == std::string::npos;
}

FleetResult ResultOf(int exitStatus) {
  switch (exitStatus) {
    case 0:
      return FleetResult::kDone;
    case 2:
      return FleetResult::kUsage;
    case 3:
      return FleetResult::kPartly;
    default:
      return FleetResult::kFailed;
  }
}

bool IsStatusOfOurs(int exitStatus) { return exitStatus >= 0 && exitStatus <= 3; }

std::size_t SizeOf(const std::vector<std::wstring>& texts) {
  std::size_t size = 0;
  for (const std::wstring& text : texts) size += text.size() + 1;
  return size;
}

std::size_t SizeOf(const FleetAnswer& answer) {
  const FleetDocument& document = answer.document;
  std::size_t size = SizeOf(answer.errors) + SizeOf(document.problems) + SizeOf(document.emptied) +
                     SizeOf(document.differences) + SizeOf(document.kept) +
                     SizeOf(document.removed);
  for (const DroppedValue& value : document.dropped) {
    size += value.file.size() + value.key.size() + value.name.size() + value.why.size();
  }
  for (const FleetCategory& category : document.categories) {
    size += category.label.size() + category.outcome.size();
  }
  return size;
}

// Judges the files of one answer.
class AnswerJudge {
 public:
  AnswerJudge(const FleetAnswerFiles& files, const std::wstring& job, const FleetLimits& limits)
      : files_(files), job_(job), limits_(limits) {
    answer_.number = files.number;
  }

  FleetAnswer Judge() {
    ReadTexts();
    ReadStatus();
    if (!answer_.exitStatus) return std::move(answer_);
    answer_.result = ResultOf(*answer_.exitStatus);
    if (!IsStatusOfOurs(*answer_.exitStatus)) {
      answer_.problem = L"it ended with exit status " + std::to_wstring(*answer_.exitStatus) +
                        L", which carrovan-cli never gives";
    }
    ReadDocument();
    return std::move(answer_);
  }

 private:
  void ReadTexts() {
    std::size_t omitted = 0;
    const auto users = FleetLines(files_.user.bytes, 1, limits_.characters, omitted);
    if (!users.empty()) answer_.user = users.front();
    answer_.errors =
        FleetLines(files_.errors.bytes, limits_.items, limits_.characters, answer_.omittedErrors);
    if (!files_.errors.problem.empty()) answer_.errors.push_back(files_.errors.problem);
  }

  void ReadStatus() {
    const FleetFile& status = files_.status;
    answer_.problem = files_.problem;
    if (!status.isThere && answer_.problem.empty()) answer_.problem = L"its exit status is missing";
    if (!status.problem.empty()) answer_.problem = status.problem;
    if (!answer_.problem.empty()) return;
    answer_.exitStatus = FleetNumber(status.bytes);
    if (answer_.exitStatus) return;
    answer_.problem = L"its exit status is no number: \"" + BeginningOf(status.bytes) + L"\"";
  }

  // A run that was refused prints none.
  void ReadDocument() {
    const FleetFile& output = files_.output;
    const bool mayBeNone =
        answer_.result == FleetResult::kFailed || answer_.result == FleetResult::kUsage;
    if (!output.problem.empty()) return NotUnderstood(output.problem);
    if (IsBlank(output.bytes)) {
      if (!mayBeNone) NotUnderstood(L"it printed no document");
      return;
    }
    std::wstring reason;
    auto document = ReadFleetDocument(output.bytes, job_, *answer_.exitStatus, limits_, reason);
    if (document) {
      answer_.document = std::move(*document);
    } else {
      NotUnderstood(kNoDocument + (L": " + reason) + L": \"" + BeginningOf(output.bytes) + L"\"");
    }
  }

  void NotUnderstood(const std::wstring& why) {
    answer_.result = FleetResult::kNotUnderstood;
    answer_.problem = why;
  }

  // The cut may part a character, of which nothing is shown then.
  static std::wstring BeginningOf(const std::string& bytes) {
    const std::size_t first = std::min(bytes.find_first_not_of(" \t\r\n"), bytes.size());
    std::wstring text = FromUtf8(std::string_view(bytes).substr(first, kShownOfNoDocument));
    if (bytes.size() - first <= kShownOfNoDocument) return text;
    while (!text.empty() && text.back() == L'\xFFFD') text.pop_back();
    return text + L"\x2026";
  }

  const FleetAnswerFiles& files_;
  const std::wstring& job_;
  const FleetLimits& limits_;
  FleetAnswer answer_;
};

class FleetReader {
 public:
  FleetReader(const FleetFolder& folder, const FleetLimits& limits)
      : folder_(folder), limits_(limits) {}

  FleetReport Read(FleetList list) {
    FleetReport report;
    report.job = std::move(list.job);
    report.repeated = std::move(list.repeated);
    for (const std::wstring& host : list.hosts) {
      report.hosts.push_back(ReadHost(host, report.job));
    }
    const std::set<std::wstring> asked(list.hosts.begin(), list.hosts.end());
    for (std::wstring& name : folder_.Folders()) {
      if (!asked.contains(name)) report.notAsked.push_back(std::move(name));
    }
    return report;
  }

 private:
  FleetHost ReadHost(const std::wstring& name, const std::wstring& job) {
    FleetHost host;
    host.name = name;
    const FleetHostFolder found = folder_.ReadHost(name);
    for (const FleetAnswerFiles& answer : found.answers) {
      host.answers.push_back(ReadAnswer(name, answer, job));
    }
    host.failure = FailureOf(found);
    if (!CanBeHostFolder(name)) host.note = L"its name cannot be that of a folder";
    SetResult(host);
    return host;
  }

  FleetAnswer ReadAnswer(const std::wstring& host, const FleetAnswerFiles& listed,
                         const std::wstring& job) {
    FleetAnswer answer;
    answer.number = listed.number;
    answer.problem = listed.problem;
    if (listed.problem.empty()) {
      const FleetAnswerFiles files = folder_.ReadAnswer(host, listed.number);
      answer = AnswerJudge(files, job, limits_).Judge();
    }
    characters_ += SizeOf(answer);
    if (characters_ > limits_.allCharacters) limits_.items = 1;
    return answer;
  }

  // Lines of why there is no or no whole answer; none where that is not so.
  std::vector<std::wstring> FailureOf(const FleetHostFolder& found) {
    std::size_t omitted = 0;
    auto lines = FleetLines(found.failure.bytes, limits_.items, limits_.characters, omitted);
    characters_ += SizeOf(lines);
    if (omitted > 0) lines.push_back(L"and " + std::to_wstring(omitted) + L" more lines");
    if (!found.failure.problem.empty()) lines.push_back(found.failure.problem);
    if (!found.problem.empty()) lines.push_back(found.problem);
    if (found.failure.isThere && lines.empty()) lines.emplace_back(L"failure.txt is empty");
    return lines;
  }

  const FleetFolder& folder_;
  FleetLimits limits_;
  std::size_t characters_ = 0;
};

}  // namespace

std::optional<FleetReport> ReadFleet(const FileReader& files, const std::wstring& folder,
                                     const FleetLimits& limits, std::wstring& reason) {
  const FleetFolder opened(files, folder);
  reason = opened.Problem();
  if (!reason.empty()) return std::nullopt;
  const FleetFile listed = opened.Read(kListName);
  if (!listed.isThere) reason = folder + L" holds no " + kListName;
  if (!listed.problem.empty()) reason = folder + L": " + listed.problem;
  if (!reason.empty()) return std::nullopt;
  std::wstring problem;
  auto list = ReadFleetList(listed.bytes, problem);
  if (list) return FleetReader(opened, limits).Read(std::move(*list));
  reason = folder + L": " + kListName + L" is not understood: " + problem;
  return std::nullopt;
}

ExitStatus RunFleetVerb(const Session& session, const FleetOptions& options) {
  const ReportFile page(session, options.report);
  if (const auto refusal = page.Refusal()) return session.Fail(*refusal);
  const auto files = session.OpenFiles();
  if (!files) return ExitStatus::kFailed;
  std::wstring reason;
  const auto report = ReadFleet(files->Files(), options.folder, {}, reason);
  if (!report) return session.Fail(reason);
  const ExitStatus status = IsAllDone(*report) ? ExitStatus::kDone : ExitStatus::kPartly;
  if (options.json) {
    PrintFleetJson(session, *report, status);
  } else {
    PrintFleet(session, *report);
  }
  return page.Write(PageOfFleet(options.folder, *report, NameOfProgram()), status);
}

void AddFleet(CLI::App& app, FleetOptions& options, Verb& chosen) {
  CLI::App* verb = app.add_subcommand(
      "fleet", "Show how a job went on many workstations, from what each of them answered");
  AddText(*verb, "RESULTS", options.folder, "The folder with the collected answers")->required();
  AddJson(*verb, options.json);
  AddReport(*verb, options.report);
  verb->callback([&] {
    chosen = [&options](const Session& session) { return RunFleetVerb(session, options); };
  });
}

}  // namespace carrovan
