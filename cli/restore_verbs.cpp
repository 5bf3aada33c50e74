#include "cli/restore_verbs.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "cli/json_text.h"
#include "cli/preview_output.h"
#include "cli/report_output.h"
#include "cli/run_output.h"
#include "cli/undo_trial.h"
#include "environment/installed_versions.h"
#include "environment/version_folders.h"
#include "environment/wizard_state.h"
#include "guard/run_lock.h"
#include "report/run_page.h"
#include "restore/point_check.h"
#include "restore/restore_point.h"
#include "restore/undo_run.h"

namespace carrovan {
namespace {

// More than anybody has.
constexpr std::int64_t kMostPoints = 1'000'000;
constexpr int kMostDays = 100'000;

std::wstring StateText(PointState state) {
  switch (state) {
    case PointState::kUnfinished:
      return L"unfinished";
    case PointState::kFinished:
      return L"finished";
    case PointState::kPartlyUndone:
      return L"partly undone";
    default:
      return L"undone";
  }
}

std::vector<RestorePoint> ReadAll(const FileReader& files, const std::wstring& root) {
  std::vector<RestorePoint> points;
  for (const std::wstring& id : RestorePointIds(files, root)) {
    if (auto point = ReadRestorePoint(files, root, id)) points.push_back(std::move(*point));
  }
  return points;
}

nlohmann::json ToJson(const RestorePoint& point) {
  return {{"id", ToUtf8(point.id)},
          {"verb", ToUtf8(point.about.verb)},
          {"version", ToUtf8(point.about.version)},
          {"package", ToUtf8(point.about.package)},
          {"state", ToUtf8(StateText(point.state))},
          {"files", point.files.size()},
          {"keys", point.keys.size()},
          {"folder", ToUtf8(point.folder)}};
}

void PrintPoint(const Session& session, const RestorePoint& point) {
  std::wstring line = point.id + L"  " + point.about.verb + L" " + point.about.version + L", " +
                      StateText(point.state) + L", " + std::to_wstring(point.files.size()) +
                      L" files and folders, " + std::to_wstring(point.keys.size()) + L" keys";
  if (!point.about.package.empty()) line += L", " + point.about.package;
  session.Print(line);
}

// The restore root of the machine, or nothing after saying why there is none.
std::optional<std::wstring> RequireRoot(const Session& session, const Machine& machine) {
  auto root = RestoreRoot(*machine.folders);
  if (!root) session.Fail(L"The user's application-data folder cannot be told");
  return root;
}

void AddList(CLI::App& app, RestorePointsOptions& options, Verb& chosen) {
  CLI::App* verb = app.add_subcommand(
      "restore-points", "List what can be undone: each import and reset keeps a restore point");
  AddJson(*verb, options.json);
  verb->callback([&] {
    chosen = [&options](const Session& session) { return RunRestorePointsVerb(session, options); };
  });
}

void AddUndo(CLI::App& app, UndoOptions& options, Verb& chosen) {
  CLI::App* verb = app.add_subcommand("undo", "Put back what an import or a reset changed");
  AddText(*verb, "ID", options.id, "Restore point of the run; the newest without one");
  AddLabels(*verb, options.categories, "Put back only these categories");
  verb->add_flag("--force", options.force, "Overwrite also what was changed since");
  verb->add_flag("--trust", options.trust,
                 "Undo also what only an import with --trust can have changed");
  CLI::Option* dryRun =
      verb->add_flag("--dry-run", options.dryRun, "Change nothing; print what would change");
  verb->add_flag("--details", options.details, "With --dry-run, also each file, key and value")
      ->needs(dryRun);
  AddJson(*verb, options.json);
  AddReport(*verb, options.report);
  verb->callback([&] {
    chosen = [&options](const Session& session) { return RunUndoVerb(session, options); };
  });
}

void AddPrune(CLI::App& app, PruneOptions& options, Verb& chosen) {
  CLI::App* verb = app.add_subcommand("prune", "Remove restore points, by number or by age");
  CLI::Option* keep = verb->add_option("--keep", options.choice.keep, "Keep the N newest");
  keep->check(CLI::Range(std::int64_t{0}, kMostPoints))->type_name("N");
  CLI::Option* age =
      verb->add_option("--older-than", options.choice.olderThanDays,
                       "Remove only those older than DAYS; with --keep, the N newest stay anyway");
  age->check(CLI::Range(0, kMostDays))->type_name("DAYS");
  auto* which = verb->add_option_group("which", "Which restore points go");
  which->add_options(keep, age);
  which->require_option(1, 2);
  AddJson(*verb, options.json);
  verb->callback([&] {
    chosen = [&options](const Session& session) { return RunPruneVerb(session, options); };
  });
}

std::uint64_t FreedBytes(const PruneReport& report) {
  std::uint64_t bytes = 0;
  for (const PrunedPoint& point : report.removed) bytes += point.freedBytes;
  return bytes;
}

std::vector<std::wstring> ProblemsOf(const PruneReport& report) {
  std::vector<std::wstring> problems;
  for (const std::wstring& id : report.failed) problems.push_back(L"Not removed whole: " + id);
  return problems;
}

void PrintRemoved(const Session& session, const PruneReport& report) {
  for (const PrunedPoint& point : report.removed) {
    session.Print(L"Removed " + point.id + L", " + std::to_wstring(point.freedBytes) + L" bytes");
  }
  session.Print(std::to_wstring(report.removed.size()) + L" restore points removed, " +
                std::to_wstring(FreedBytes(report)) + L" bytes freed");
}

nlohmann::json RemovedJson(const PruneReport& report) {
  nlohmann::json list = nlohmann::json::array();
  for (const PrunedPoint& point : report.removed) {
    list.push_back({{"id", ToUtf8(point.id)}, {"freedBytes", point.freedBytes}});
  }
  return list;
}

}  // namespace

ExitStatus RunRestorePointsVerb(const Session& session, const RestorePointsOptions& options) {
  const auto owned = session.OpenMachine();
  if (!owned) return ExitStatus::kFailed;
  const Machine machine = owned->Ports();
  const auto root = RequireRoot(session, machine);
  if (!root) return ExitStatus::kFailed;
  const std::vector<RestorePoint> points = ReadAll(*machine.files, *root);
  if (options.json) {
    nlohmann::json list = nlohmann::json::array();
    for (const RestorePoint& point : points) list.push_back(ToJson(point));
    PrintJsonText(session, list);
    return ExitStatus::kDone;
  }
  for (const RestorePoint& point : points) PrintPoint(session, point);
  if (points.empty()) session.Print(L"There are no restore points");
  return ExitStatus::kDone;
}

ExitStatus RunPruneVerb(const Session& session, const PruneOptions& options) {
  const auto owned = session.OpenMachine();
  if (!owned) return ExitStatus::kFailed;
  const Machine machine = owned->Ports();
  const auto root = RequireRoot(session, machine);
  if (!root) return ExitStatus::kFailed;
  const OrReason<RunLock> lock = RunLock::Take(machine, L"prune");
  if (!lock.object) return RefuseBesides(session, lock.reason);
  const PruneReport report =
      PruneRestorePoints(*machine.files, *machine.clock, *root, options.choice);
  const std::vector<std::wstring> problems = ProblemsOf(report);
  const ExitStatus status = problems.empty() ? ExitStatus::kDone : ExitStatus::kPartly;
  if (options.json) {
    PrintJsonText(session, {{"verb", "prune"},
                            {"exitStatus", static_cast<int>(status)},
                            {"removed", RemovedJson(report)},
                            {"freedBytes", FreedBytes(report)},
                            {"kept", RestorePointIds(*machine.files, *root).size()},
                            {"problems", TextsToJson(problems)}});
  } else {
    PrintRemoved(session, report);
  }
  for (const std::wstring& problem : problems) session.Complain(problem);
  return status;
}

void AddRestoreVerbs(CLI::App& app, RestoreOptions& options, Verb& chosen) {
  AddList(app, options.list, chosen);
  AddUndo(app, options.undo, chosen);
  AddPrune(app, options.prune, chosen);
}

namespace {

// The point that is asked for, or nothing after saying why there is none.
std::optional<RestorePoint> FindPoint(const Session& session, const Machine& machine,
                                      const std::wstring& asked) {
  const auto root = RestoreRoot(*machine.folders);
  if (!root) {
    session.Fail(L"The user's application-data folder cannot be told");
    return std::nullopt;
  }
  const std::vector<std::wstring> ids = RestorePointIds(*machine.files, *root);
  if (asked.empty() && ids.empty()) {
    session.Fail(L"There is nothing to undo: no restore point in " + *root);
    return std::nullopt;
  }
  auto point = ReadRestorePoint(*machine.files, *root, asked.empty() ? ids.front() : asked);
  if (!point && asked.empty()) {
    session.Fail(L"The restore point " + ids.front() + L" cannot be read");
  } else if (!point) {
    session.Fail(L"There is no restore point " + asked + L"; 'restore-points' lists them");
  }
  return point;
}

bool IsChosen(const CategoryChoice& choice, const CategoryRecord* record) {
  return record != nullptr &&
         std::ranges::any_of(choice.labels, [record](const std::wstring& label) {
           return FindCategoryByLabel(label) == record;
         });
}

// The places of the version that the run of the point worked on. Nothing, with the reason, when
// they are not known.
std::optional<CategoryPlaces> FindPlaces(const RestorePoint& point, const Machine& machine,
                                         std::wstring& reason) {
  if (point.about.version.empty()) {
    reason = L"The run of " + point.id + L" ended before its version was known; it can be " +
             L"undone as a whole only";
    return std::nullopt;
  }
  ProductContext context;
  if (!LoadProductContext(context, machine)) {
    reason = TextOf(RunRefusal::kUnknownProduct);
    return std::nullopt;
  }
  EnumerateInstalledVersions(context, *machine.registry);
  // An import goes by the number that belongs to the year, a reset by the running version's own.
  if (point.about.verb == L"reset") {
    SelectShownVersion(context, point.about.version);
  } else {
    SelectVersion(context, point.about.version);
  }
  if (PrepareVersionFolders(context, machine)) return CategoryPlaces(context, machine);
  reason = L"The folders of version " + point.about.version + L" cannot be told";
  return std::nullopt;
}

void PrintReport(const Session& session, const UndoOptions& options, const UndoReport& report,
                 const UndoTrial* trial, nlohmann::json document) {
  if (options.dryRun && options.json) {
    document["dryRun"] = true;
    PrintPreviewJson(session, trial->changes, std::move(document));
  } else if (options.dryRun) {
    PrintPreview(session, trial->changes, options.details);
  } else if (options.json) {
    PrintJsonText(session, document);
  } else {
    session.Print(L"Restore point " + FromUtf8(document["restorePoint"].get<std::string>()) +
                  L": " + std::to_wstring(report.restored) + L" put back, " +
                  std::to_wstring(report.kept.size()) + L" kept");
  }
}

ExitStatus Conclude(const Session& session, const RestorePoint& point, const UndoOptions& options,
                    const UndoReport& report, const UndoTrial* trial) {
  for (const std::wstring& line : report.kept) session.Complain(line);
  for (const std::wstring& line : report.problems) session.Complain(line);
  const ExitStatus status = report.IsComplete() ? ExitStatus::kDone : ExitStatus::kPartly;
  PrintReport(session, options, report, trial,
              {{"verb", "undo"},
               {"restorePoint", ToUtf8(point.id)},
               {"exitStatus", static_cast<int>(status)},
               {"restored", report.restored},
               {"kept", TextsToJson(report.kept)},
               {"problems", TextsToJson(report.problems)}});
  return status;
}

// Why nothing is played back.
std::wstring TextOfDistrust(const RestorePoint& point, const std::vector<std::wstring>& reasons,
                            const Machine& machine) {
  std::wstring line = L"The restore point " + point.id + L" is not to be trusted: " + reasons[0];
  if (const std::size_t more = reasons.size() - 1; more > 0) {
    line += L" (and " + std::to_wstring(more) + L" more)";
  }
  if (RefusalsOfPoint(point, true, machine).empty()) {
    line += L"; --trust undoes it all the same, as after an import with --trust";
  }
  return line;
}

// The undo of one restore point.
class Undoing {
 public:
  Undoing(const Session& session, const UndoOptions& options, const RestorePoint& point,
          const Machine& machine)
      : session_(session),
        options_(options),
        point_(point),
        machine_(machine),
        page_(session, options.report) {}

  ExitStatus Run() {
    std::wstring reason;
    places_ = FindPlaces(point_, machine_, reason);
    if (!options_.categories.labels.empty() && !places_) return Refuse(reason);
    const UndoChoice choice = Choice();
    OrReason<UndoTrial> trial;
    if (options_.dryRun || page_.IsWanted()) {
      trial = TryUndo(point_, choice, places_, machine_);
      if (!trial.object) return Refuse(trial.reason);
    }
    const UndoReport report =
        options_.dryRun ? trial.object->report : UndoChanges(point_, choice, machine_);
    if (!report.refused.empty()) return Refuse(TextOfDistrust(point_, report.refused, machine_));
    const ExitStatus status = Conclude(session_, point_, options_, report, trial.object.get());
    if (!page_.IsWanted()) return status;
    return page_.Write(PageOfUndo(Facts(), point_.id, report, trial.object->changes), status);
  }

 private:
  UndoChoice Choice() const {
    UndoChoice choice;
    choice.force = options_.force;
    choice.trusted = options_.trust;
    if (options_.categories.labels.empty()) return choice;
    choice.includesFile = [this](const FileHistory& file) {
      return IsChosen(options_.categories, places_->OfFile(file.path));
    };
    choice.includesKey = [this](const KeyHistory& key) {
      return IsChosen(options_.categories, places_->OfKey(key.hive, key.keyPath));
    };
    return choice;
  }

  RunFacts Facts() const {
    RunFacts facts;
    facts.about = point_.about;
    facts.dryRun = options_.dryRun;
    facts.time = machine_.clock->Now();
    facts.program = NameOfProgram();
    return facts;
  }

  ExitStatus Refuse(const std::wstring& reason) const {
    const ExitStatus status = session_.Fail(reason);
    return page_.Write(PageOfRefusedUndo(Facts(), point_.id, reason), status);
  }

  const Session& session_;
  const UndoOptions& options_;
  const RestorePoint& point_;
  const Machine& machine_;
  const ReportFile page_;
  std::optional<CategoryPlaces> places_;
};

ExitStatus Undo(const Session& session, const UndoOptions& options, const Machine& machine) {
  const auto point = FindPoint(session, machine, options.id);
  return point ? Undoing(session, options, *point, machine).Run() : ExitStatus::kFailed;
}

}  // namespace

ExitStatus RunUndoVerb(const Session& session, const UndoOptions& options) {
  if (const auto refusal = RefusalOfLabels(options.categories)) return session.Misused(*refusal);
  const auto owned = session.OpenMachine();
  if (!owned) return ExitStatus::kFailed;
  const Machine machine = owned->Ports();
  if (IsProductRunning(*machine.processes)) {
    return session.Fail(TextOf(RunRefusal::kProductRunning));
  }
  if (const auto refusal = ReportFile(session, options.report).Refusal()) {
    return session.Fail(*refusal);
  }
  if (options.dryRun) return Undo(session, options, machine);
  const OrReason<RunLock> lock = RunLock::Take(machine, L"undo");
  if (!lock.object) return RefuseBesides(session, lock.reason);
  return Undo(session, options, machine);
}

}  // namespace carrovan
