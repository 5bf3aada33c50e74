#include "cli/restore_verbs.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "cli/json_text.h"
#include "cli/run_output.h"
#include "environment/installed_versions.h"
#include "environment/version_folders.h"
#include "environment/wizard_state.h"
#include "guard/run_lock.h"
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
  AddJson(*verb, options.json);
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
  verb->callback([&] {
    chosen = [&options](const Session& session) { return RunPruneVerb(session, options); };
  });
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
  std::uint64_t freedBytes = 0;
  for (const PrunedPoint& point : report.removed) {
    session.Print(L"Removed " + point.id + L", " + std::to_wstring(point.freedBytes) + L" bytes");
    freedBytes += point.freedBytes;
  }
  session.Print(std::to_wstring(report.removed.size()) + L" restore points removed, " +
                std::to_wstring(freedBytes) + L" bytes freed");
  for (const std::wstring& id : report.failed) session.Complain(L"Not removed whole: " + id);
  return report.failed.empty() ? ExitStatus::kDone : ExitStatus::kPartly;
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

// The places of the version that the run of the point worked on. Nothing after saying why.
std::optional<CategoryPlaces> PlacesOf(const Session& session, const RestorePoint& point,
                                       const Machine& machine) {
  if (point.about.version.empty()) {
    session.Fail(L"The run of " + point.id + L" ended before its version was known; it can be " +
                 L"undone as a whole only");
    return std::nullopt;
  }
  ProductContext context;
  if (!LoadProductContext(context, machine)) {
    session.Fail(TextOf(RunRefusal::kUnknownProduct));
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
  session.Fail(L"The folders of version " + point.about.version + L" cannot be told");
  return std::nullopt;
}

ExitStatus Conclude(const Session& session, const RestorePoint& point, const UndoReport& report,
                    bool asJson) {
  for (const std::wstring& line : report.kept) session.Complain(line);
  for (const std::wstring& line : report.problems) session.Complain(line);
  const ExitStatus status = report.IsComplete() ? ExitStatus::kDone : ExitStatus::kPartly;
  if (asJson) {
    PrintJsonText(session, {{"restorePoint", ToUtf8(point.id)},
                            {"exitStatus", static_cast<int>(status)},
                            {"restored", report.restored},
                            {"kept", TextsToJson(report.kept)},
                            {"problems", TextsToJson(report.problems)}});
    return status;
  }
  session.Print(L"Restore point " + point.id + L": " + std::to_wstring(report.restored) +
                L" put back, " + std::to_wstring(report.kept.size()) + L" kept");
  return status;
}

// Nothing was played back.
ExitStatus RefuseJournal(const Session& session, const RestorePoint& point,
                         const std::vector<std::wstring>& reasons, const Machine& machine) {
  std::wstring line = L"The restore point " + point.id + L" is not to be trusted: " + reasons[0];
  if (const std::size_t more = reasons.size() - 1; more > 0) {
    line += L" (and " + std::to_wstring(more) + L" more)";
  }
  if (RefusalsOfPoint(point, true, machine).empty()) {
    line += L"; --trust undoes it all the same, as after an import with --trust";
  }
  return session.Fail(line);
}

ExitStatus Undo(const Session& session, const UndoOptions& options, const Machine& machine) {
  const auto point = FindPoint(session, machine, options.id);
  if (!point) return ExitStatus::kFailed;
  UndoChoice choice;
  choice.force = options.force;
  choice.trusted = options.trust;
  std::optional<CategoryPlaces> places;
  if (!options.categories.labels.empty()) {
    places = PlacesOf(session, *point, machine);
    if (!places) return ExitStatus::kFailed;
    choice.includesFile = [&](const FileHistory& file) {
      return IsChosen(options.categories, places->OfFile(file.path));
    };
    choice.includesKey = [&](const KeyHistory& key) {
      return IsChosen(options.categories, places->OfKey(key.hive, key.keyPath));
    };
  }
  const UndoReport report = UndoChanges(*point, choice, machine);
  if (!report.refused.empty()) return RefuseJournal(session, *point, report.refused, machine);
  return Conclude(session, *point, report, options.json);
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
  const OrReason<RunLock> lock = RunLock::Take(machine, L"undo");
  if (!lock.object) return RefuseBesides(session, lock.reason);
  return Undo(session, options, machine);
}

}  // namespace carrovan
