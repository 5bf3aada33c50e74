#include "package/import_run.h"

#include "environment/installed_versions.h"
#include "environment/string_table.h"
#include "environment/version_folders.h"
#include "package/category_import.h"
#include "package/package_description.h"
#include "package/package_opening.h"
#include "package/package_trust.h"
#include "package/put_in_place.h"
#include "package/staging_folder.h"
#include "rewrite/package_tree.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

// Profile names compare without regard to case; the section is written as "Base".
constexpr wchar_t kBaseSectionAsRead[] = L"BASE";

// What a missing value reads as.
constexpr wchar_t kMissingValue[] = L"Please check the file.";

// The name between the quotes in front of a line's "=", as the registry has it.
std::wstring ValueNameOf(const std::wstring& line) {
  std::wstring name;
  for (std::size_t i = 1; i < line.size() && line[0] == L'"' && line[i] != L'"'; ++i) {
    if (line[i] == L'\\' && i + 1 < line.size()) ++i;
    name.push_back(line[i]);
  }
  return name;
}

std::wstring KeyOf(const std::wstring& keyLine) {
  return keyLine.size() < 2 ? L"" : keyLine.substr(1, keyLine.rfind(L']') - 1);
}

// The path between the quotes behind a line's "=".
std::wstring PathOf(const std::wstring& line) {
  const std::wstring quoted = line.substr(line.find(L'=') + 1);
  const std::size_t begin = quoted.find(L'"') + 1;
  const std::wstring path = quoted.substr(begin, quoted.rfind(L'"') - begin);
  return ReplaceAll(ReplaceAll(path, L"\\\\", L"\\"), L"\\\"", L"\"");
}

void NoteDropped(const ImportRun& run, const std::vector<DroppedLine>& lines) {
  PathLookup lookup(*run.machine.files);
  for (const DroppedLine& dropped : lines) {
    const std::wstring file = dropped.file.substr(run.context.stagingFolder.size());
    const std::wstring key = KeyOf(dropped.keyLine);
    const std::wstring name = ValueNameOf(dropped.line);
    const std::wstring path = PathOf(dropped.line);
    const PathState state = lookup.StateOf(path);
    run.report.dropped.push_back(
        {file, key, name,
         (state == PathState::kNoAnswer ? L"names a network path that does not answer here: "
                                        : L"names a path that does not exist here: ") +
             dropped.line.substr(dropped.line.find(L'=') + 1)});
    if (run.paths == nullptr || !run.paths->ListsPaths()) continue;
    run.report.paths.push_back({PathFate::kDropped, path, {}, file, key, name, 0, state});
  }
}

RewriteInputs RewriteInputsOf(const ImportRun& run) {
  const PackageState& package = run.package;
  return {.packageReleaseVersion = package.releaseVersion,
          .packageInternalVersion = package.internalVersion,
          .targetReleaseYear = run.context.selectedVersion,
          .targetInternalVersion = package.targetInternalVersion,
          .productName = package.product,
          .firstDraftingFolder = package.draftingFolder};
}

void MendPackage(const ImportRun& run) {
  const RewriteInputs inputs = RewriteInputsOf(run);
  std::vector<DroppedLine> dropped;
  RewritePorts ports = RewritePortsOf(run);
  ports.dropped = &dropped;
  if (run.paths != nullptr) {
    ports.keepsDeadPaths = run.paths->KeepsDeadPaths();
    ports.stay = run.paths->WordsThatStay(inputs);
    ports.mappedTo = run.paths->NewBeginnings();
  }
  const auto failures =
      RewritePackageTree(WithoutTrailingBackslashes(run.context.stagingFolder), inputs, ports);
  NoteDropped(run, dropped);
  for (const RewriteFailure& failure : failures) {
    run.report.problems.push_back(L"Not mended: " + failure.path + L": " +
                                  DescribeSystemCode(failure.code));
  }
}

// The package's folders lie below these names, and what is not chosen of them is removed.
bool HasOwnPlaces(const PackageState& package) {
  const auto isOwn = [](const std::wstring& name) {
    return name == kMissingValue || IsPlainName(name);
  };
  return isOwn(package.company) && isOwn(package.product);
}

bool HasTargetFolders(const ImportRun& run) {
  const FileReader& files = *run.machine.files;
  return files.IsFolder(run.context.localRoot) && files.IsFolder(run.context.roamingRoot);
}

}  // namespace

RewritePorts RewritePortsOf(const ImportRun& run) {
  return {*run.machine.files, *run.machine.user, *run.machine.codePage, run.log};
}

std::wstring ReadConfigValue(const std::wstring& key, const std::wstring& section,
                             const std::wstring& path, const ProfileReader& profiles) {
  const std::wstring value = profiles.ReadValue(section, key, path);
  return value.empty() ? kMissingValue : value;
}

void OpenPackage(const ImportRun& run) {
  ProductContext& context = run.context;
  PackageState& package = run.package;
  run.report = {};
  run.report.unextracted =
      UnpackPackage(run.machine, run.observer, package.path, context.stagingFolder).failed;
  const auto value = [&](const wchar_t* key) {
    return ReadConfigValue(key, kBaseSectionAsRead, context.packageDescriptionPath,
                           *run.machine.profiles);
  };
  package.internalVersion = value(kInternalVersionKey);
  package.releaseVersion = value(kReleaseVersionKey);
  package.company = value(kCompanyKey);
  package.product = value(kProductKey);
  const std::wstring below =
      package.company + L"\\" + package.product + L"\\" + package.targetInternalVersion;
  package.localFolder = context.stagingFolder + L"Local\\" + below;
  package.roamingFolder = context.stagingFolder + L"Roaming\\" + below;
}

std::optional<RunRefusal> CheckTarget(const ImportRun& run) {
  const PackageState& package = run.package;
  if (LeadingInteger(run.context.selectedVersion) < LeadingInteger(package.releaseVersion)) {
    return RunRefusal::kNewerPackage;
  }
  // What has other names was never started either.
  const bool wasStarted =
      HasOwnPlaces(package) && HasBeenRun(package.company, package.product,
                                          package.targetInternalVersion, *run.machine.registry);
  return wasStarted ? std::nullopt : std::optional(RunRefusal::kNeverStarted);
}

bool NeedsMending(const ImportRun& run) {
  return run.package.releaseVersion != run.context.selectedVersion;
}

ImportPreparation RunImportPreparation(const ImportRun& run) {
  ProductContext& context = run.context;
  // Another version's folders must not stay in their place when they are not known.
  context.localFolder.clear();
  BuildLocalFolder(context, run.machine);
  run.package.draftingFolder = context.localFolder;
  if (run.paths != nullptr) run.paths->MapBelow(context.stagingFolder, run.report);
  if (NeedsMending(run)) MendPackage(run);

  context.localRoot.clear();
  context.roamingRoot.clear();
  const bool known =
      PrepareVersionFolders(context, run.machine) && !run.package.draftingFolder.empty();
  BuildStagingLocalFolder(context, context.selectedVersion);

  ImportPreparation preparation;
  preparation.offered = OfferedOnImport(*run.machine.profiles, context.packageDescriptionPath);
  const bool complete = known && (!NeedsMending(run) || HasTargetFolders(run));
  if (!complete) preparation.refusal = RunRefusal::kFoldersMissing;
  return preparation;
}

namespace {

// What is now in the package is what the machine gets.
void ReportPaths(const ImportRun& run) {
  if (run.paths == nullptr) return;
  const RewriteInputs inputs = RewriteInputsOf(run);
  run.paths->ReportBelow(run.context.stagingFolder, NeedsMending(run) ? &inputs : nullptr,
                         run.report);
}

}  // namespace

void ApplyPackage(const ImportRun& run, const CategorySet& offered, const CategorySet& chosen) {
  // From here on the staging folder may hold the only copy of what is merged and taken away.
  KeepRunFolder(*run.machine.files, WithoutTrailingBackslashes(run.context.stagingFolder));
  for (const SettingCategory category : offered) {
    run.observer.OnCategory(category);
    ApplyCategory(run, category, chosen.contains(category));
  }
  ReportPaths(run);
  PutInPlace(
      {run.context, run.package.applicationDataRoot, run.machine, run.registryTool, run.observer},
      run.report);
}

std::wstring ImportFinishText(const ProductContext& context, const TextSource& texts) {
  return texts.Text(StringId::kImportedTo) + context.productName + L" " + context.selectedVersion +
         L".";
}

}  // namespace carrovan
