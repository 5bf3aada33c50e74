#include "cli/restore_verbs.h"

#include <nlohmann/json.hpp>

#include "cli/json_text.h"
#include "restore/restore_folder.h"
#include "restore/restore_point.h"

namespace carrovan {
namespace {

// More than anybody has.
constexpr std::int64_t kMostPoints = 1'000'000;

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
  auto root = RestoreRoot(machine.folders);
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
  CLI::App* verb = app.add_subcommand("prune", "Remove all but the newest restore points");
  verb->add_option("--keep", options.keep, "How many restore points to keep")
      ->required()
      ->check(CLI::Range(std::int64_t{0}, kMostPoints))
      ->type_name("N");
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
  const std::vector<RestorePoint> points = ReadAll(machine.files, *root);
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
  std::vector<std::wstring> failed;
  for (const std::wstring& id : PruneRestorePoints(machine.files, *root, options.keep, failed)) {
    session.Print(L"Removed " + id);
  }
  for (const std::wstring& id : failed) session.Complain(L"Not removed whole: " + id);
  return failed.empty() ? ExitStatus::kDone : ExitStatus::kPartly;
}

void AddRestoreVerbs(CLI::App& app, RestoreOptions& options, Verb& chosen) {
  AddList(app, options.list, chosen);
  AddUndo(app, options.undo, chosen);
  AddPrune(app, options.prune, chosen);
}

}  // namespace carrovan
