#include "cli/paths_output.h"

#include <algorithm>
#include <map>

#include "cli/category_choice.h"
#include "cli/json_text.h"
#include "environment/installed_versions.h"
#include "environment/wizard_state.h"
#include "text/text.h"

namespace carrovan {
namespace {

using nlohmann::json;

// As JSON has it; the words for people follow from it.
std::wstring_view NameOf(PathState state) {
  constexpr std::wstring_view kNames[] = {L"exists", L"missing", L"noAnswer", L"variable"};
  return kNames[static_cast<std::size_t>(state)];
}

std::wstring_view WordsFor(PathState state) {
  constexpr std::wstring_view kWords[] = {L"exists here", L"does not exist here",
                                          L"does not answer here", L"depends on a variable"};
  return kWords[static_cast<std::size_t>(state)];
}

std::wstring_view WordFor(PathFate fate) {
  constexpr std::wstring_view kWords[] = {L"kept", L"mapped", L"dropped"};
  return kWords[static_cast<std::size_t>(fate)];
}

std::wstring PlaceText(const std::wstring& file, const std::wstring& key, const std::wstring& name,
                       std::size_t line) {
  if (key.empty()) return file + L", line " + std::to_wstring(line);
  return file + L": " + key + L"  " + (name.empty() ? L"(default)" : name);
}

json PlaceJson(const std::wstring& file, const std::wstring& key, const std::wstring& name,
               std::size_t line) {
  return {{"file", ToUtf8(file)}, {"key", ToUtf8(key)}, {"name", ToUtf8(name)}, {"line", line}};
}

// A value that names a path several times is one place.
std::map<std::wstring, std::size_t> PlacesOf(const ListedPath& path) {
  std::map<std::wstring, std::size_t> places;
  for (const PathUse& use : path.uses) {
    ++places[PlaceText(use.file, use.place.key, use.place.name, use.place.line)];
  }
  return places;
}

std::wstring Times(std::size_t count) {
  return count == 1 ? L"once" : std::to_wstring(count) + L" times";
}

std::wstring Heading(const ListedPath& path) {
  std::wstring line = path.path + L": " + Times(path.uses.size());
  if (!path.becomes.empty() && path.becomes != path.path) line += L", becomes " + path.becomes;
  if (path.state) line.append(L", ").append(WordsFor(*path.state));
  return line;
}

std::size_t CountOf(const std::vector<ImportedPath>& paths, PathFate fate) {
  return static_cast<std::size_t>(
      std::ranges::count_if(paths, [fate](const auto& path) { return path.fate == fate; }));
}

// The newest version, or the one that was asked for; nothing when that is not installed.
const InstalledVersion* TargetVersion(const ProductContext& context, const std::wstring& year) {
  const InstalledVersion* target = nullptr;
  for (const InstalledVersion& version : context.installedVersions) {
    if (!year.empty() && YearForm(version.internalVersion) != year) continue;
    const bool isNewer = target == nullptr || LeadingNumber(version.internalVersion) >
                                                  LeadingNumber(target->internalVersion);
    if (isNewer) target = &version;
  }
  return target;
}

// What an import into the version does with paths.
std::optional<RewriteInputs> InputsFor(const PackageInspection& inspection,
                                       const InstalledVersion& target) {
  const std::wstring year = YearForm(target.internalVersion);
  if (inspection.legacy || inspection.releaseVersion == year) return std::nullopt;
  return RewriteInputs{.packageReleaseVersion = inspection.releaseVersion,
                       .packageInternalVersion = inspection.internalVersion,
                       .targetReleaseYear = year,
                       .targetInternalVersion = target.internalVersion,
                       .productName = inspection.product,
                       .firstDraftingFolder = L""};
}

// What the paths are looked up on; why there is nothing goes to `refusal`.
std::optional<PathTarget> TargetOf(const Machine& machine, const InspectOptions& options,
                                   const PackageInspection& inspection,
                                   std::optional<std::wstring>& refusal) {
  ProductContext context;
  if (!LoadProductContext(context, machine)) {
    refusal = TextOf(RunRefusal::kUnknownProduct);
    return std::nullopt;
  }
  EnumerateInstalledVersions(context, *machine.registry);
  const InstalledVersion* version = TargetVersion(context, options.year);
  if (version == nullptr) {
    refusal = RefusalOfYear(context, options.year);
    return std::nullopt;
  }
  return PathTarget{machine, InputsFor(inspection, *version)};
}

ExitStatus Print(const Session& session, const InspectOptions& options,
                 const PathListing& listing) {
  for (const std::wstring& problem : listing.problems) session.Complain(L"Not read: " + problem);
  if (options.json) {
    PrintJsonText(session, {{"package", ToUtf8(options.package)},
                            {"paths", PathListingJson(listing)},
                            {"problems", TextsToJson(listing.problems)}});
  } else {
    PrintPathListing(session, listing);
  }
  return listing.problems.empty() ? ExitStatus::kDone : ExitStatus::kPartly;
}

}  // namespace

ExitStatus InspectPaths(const Session& session, const InspectOptions& options,
                        ArchiveExaminer& archive, const PackageInspection& inspection) {
  if (!inspection.contentWasRead) {
    return session.Fail(L"The package would unpack to an absurd size, and its paths are not read");
  }
  std::unique_ptr<OwnedMachine> owned;
  if (!session.OpenMachineIfAny(owned)) return ExitStatus::kFailed;
  if (!owned) {
    if (!options.year.empty()) return session.Fail(L"--to needs a machine with the product");
    return Print(session, options, ListPackagePaths(archive, *OpenHostCodePage(), nullptr));
  }
  const Machine machine = owned->Ports();
  std::optional<std::wstring> refusal;
  const auto target = TargetOf(machine, options, inspection, refusal);
  if (!target) return session.Fail(*refusal);
  return Print(session, options, ListPackagePaths(archive, *machine.codePage, &*target));
}

void PrintPathListing(const Session& session, const PathListing& listing) {
  session.Print(L"Paths       " + (listing.paths.empty() ? std::wstring(L"none")
                                                         : std::to_wstring(listing.paths.size())));
  for (const ListedPath& path : listing.paths) {
    session.Print(L"  " + Heading(path));
    for (const auto& [place, count] : PlacesOf(path)) {
      session.Print(L"    " + place + (count == 1 ? L"" : L" (" + Times(count) + L")"));
    }
  }
}

json PathListingJson(const PathListing& listing) {
  json paths = json::array();
  for (const ListedPath& path : listing.paths) {
    json places = json::array();
    for (const PathUse& use : path.uses) {
      places.push_back(PlaceJson(use.file, use.place.key, use.place.name, use.place.line));
    }
    paths.push_back({{"path", ToUtf8(path.path)},
                     {"count", path.uses.size()},
                     {"becomes", path.becomes.empty() ? json() : json(ToUtf8(path.becomes))},
                     {"state", path.state ? json(ToUtf8(NameOf(*path.state))) : json()},
                     {"places", std::move(places)}});
  }
  return paths;
}

void PrintImportedPathCounts(const Session& session, const std::vector<ImportedPath>& paths) {
  if (paths.empty()) return;
  std::wstring line = L"Paths: ";
  line += std::to_wstring(CountOf(paths, PathFate::kKept)) + L" kept, ";
  line += std::to_wstring(CountOf(paths, PathFate::kMapped)) + L" mapped, ";
  line += std::to_wstring(CountOf(paths, PathFate::kDropped)) + L" dropped";
  session.Print(line);
}

void PrintImportedPaths(const Session& session, const std::vector<ImportedPath>& paths) {
  for (const ImportedPath& path : paths) {
    std::wstring line = L"  path ";
    line.append(WordFor(path.fate)).append(WordFor(path.fate).size() == 4 ? L"    " : L" ");
    if (path.fate == PathFate::kMapped) line += L" ";
    if (!path.was.empty()) line += path.was + L" -> ";
    line += path.path;
    line.append(L" (").append(WordsFor(path.state)).append(L")  ");
    session.Print(line + PlaceText(path.file, path.key, path.name, path.line));
  }
}

json ImportedPathsJson(const std::vector<ImportedPath>& paths) {
  json list = json::array();
  for (const ImportedPath& path : paths) {
    json item = PlaceJson(path.file, path.key, path.name, path.line);
    item.update({{"fate", ToUtf8(WordFor(path.fate))},
                 {"path", ToUtf8(path.path)},
                 {"was", path.was.empty() ? json() : json(ToUtf8(path.was))},
                 {"state", ToUtf8(NameOf(path.state))}});
    list.push_back(std::move(item));
  }
  return list;
}

}  // namespace carrovan
