#include <algorithm>
#include <nlohmann/json.hpp>

#include "cli/command_line_view.h"
#include "cli/json_text.h"
#include "cli/restore_verbs.h"
#include "environment/category_places.h"
#include "environment/installed_versions.h"
#include "environment/version_folders.h"
#include "environment/wizard_state.h"
#include "restore/point_check.h"
#include "restore/restore_folder.h"
#include "restore/undo_run.h"

namespace carrovan {
namespace {

// The point that is asked for, or nothing after saying why there is none.
std::optional<RestorePoint> FindPoint(const Session& session, const Machine& machine,
                                      const std::wstring& asked) {
  const auto root = RestoreRoot(machine.folders);
  if (!root) {
    session.Fail(L"The user's application-data folder cannot be told");
    return std::nullopt;
  }
  const std::vector<std::wstring> ids = RestorePointIds(machine.files, *root);
  if (asked.empty() && ids.empty()) {
    session.Fail(L"There is nothing to undo: no restore point in " + *root);
    return std::nullopt;
  }
  auto point = ReadRestorePoint(machine.files, *root, asked.empty() ? ids.front() : asked);
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
  CommandLineView view(session, L"");
  ProductContext context;
  if (!LoadProductContext(context, machine, view)) return std::nullopt;
  EnumerateInstalledVersions(context, machine.registry);
  // An import goes by the number that the year tells, a reset by the running version's own.
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

}  // namespace

ExitStatus RunUndoVerb(const Session& session, const UndoOptions& options) {
  if (const auto refused = RefuseUnknownLabels(session, options.categories)) return *refused;
  const auto owned = session.OpenMachine();
  if (!owned) return ExitStatus::kFailed;
  const Machine machine = owned->Ports();
  if (session.RefuseBesideProduct(machine.processes)) return ExitStatus::kFailed;
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

}  // namespace carrovan
