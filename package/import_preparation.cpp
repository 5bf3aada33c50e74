#include "package/import_preparation.h"

#include "environment/installed_versions.h"
#include "environment/string_table.h"
#include "environment/version_folders.h"
#include "package/package_description.h"
#include "package/package_opening.h"
#include "package/package_trust.h"
#include "rewrite/package_tree.h"
#include "text/path_text.h"
#include "wizard/category_tree.h"

namespace carrovan {
namespace {

// Profile names compare without regard to case; the section is written as "Base".
constexpr wchar_t kBaseSectionAsRead[] = L"BASE";

// What a missing value reads as.
constexpr wchar_t kMissingValue[] = L"Please check the file.";

bool IsOtherRelease(const ImportRun& run) {
  return run.package.releaseVersion != run.context.selectedVersion;
}

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

void NoteDropped(const ImportRun& run, const std::vector<DroppedLine>& lines) {
  for (const DroppedLine& dropped : lines) {
    run.report.dropped.push_back({dropped.file.substr(run.context.stagingFolder.size()),
                                  KeyOf(dropped.keyLine), ValueNameOf(dropped.line),
                                  L"names a path that does not exist here: " +
                                      dropped.line.substr(dropped.line.find(L'=') + 1)});
  }
}

void MendPackage(const ImportRun& run) {
  const PackageState& package = run.package;
  run.view.ShowMessage(std::wstring(Text(StringId::kKeepPathFiles)));
  const RewriteInputs inputs{.packageReleaseVersion = package.releaseVersion,
                             .packageInternalVersion = package.internalVersion,
                             .targetReleaseYear = run.context.selectedVersion,
                             .targetInternalVersion = package.targetInternalVersion,
                             .productName = package.product,
                             .firstDraftingFolder = package.draftingFolder};
  std::vector<DroppedLine> dropped;
  RewritePorts ports = RewritePortsOf(run);
  ports.dropped = &dropped;
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

void FillTree(const ImportRun& run, EditableCategoryTree& tree) {
  BuildCategoryTree(tree, [&run](const CategoryRecord& record) {
    return IsOfferedOnImport(record, run.machine.profiles, run.context.packageDescriptionPath);
  });
}

bool HasTargetFolders(const ImportRun& run) {
  const FileReader& files = run.machine.files;
  return files.IsFolder(run.context.localRoot) && files.IsFolder(run.context.roamingRoot);
}

}  // namespace

std::wstring ReadConfigValue(const std::wstring& key, const std::wstring& section,
                             const std::wstring& path, const ProfileReader& profiles) {
  const std::wstring value = profiles.ReadValue(section, key, path);
  return value.empty() ? kMissingValue : value;
}

void OpenPackage(const ImportRun& run) {
  ProductContext& context = run.context;
  PackageState& package = run.package;
  run.report.unextracted +=
      UnpackPackage(run.machine, run.view, package.path, context.stagingFolder).failed;
  const auto value = [&](const wchar_t* key) {
    return ReadConfigValue(key, kBaseSectionAsRead, context.packageDescriptionPath,
                           run.machine.profiles);
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

bool CheckTarget(const ImportRun& run) {
  if (LeadingInteger(run.context.selectedVersion) < LeadingInteger(run.package.releaseVersion)) {
    run.view.ShowApplicationMessage(std::wstring(Text(StringId::kNoDowngrade)));
    return false;
  }
  const PackageState& package = run.package;
  // What has such a name was never started either.
  if (!HasOwnPlaces(package)) return TellToRunProductOnce(run.view);
  return PassesVersionCheck(run.view, run.machine.registry, package.company, package.product,
                            package.targetInternalVersion);
}

bool RunImportPreparation(const ImportRun& run, EditableCategoryTree& tree) {
  ProductContext& context = run.context;
  // Another version's folders must not stay in their place when they cannot be told.
  context.localFolder.clear();
  BuildLocalFolder(context, run.machine);
  run.package.draftingFolder = context.localFolder;
  if (IsOtherRelease(run)) MendPackage(run);

  context.localRoot.clear();
  context.roamingRoot.clear();
  const bool known =
      PrepareVersionFolders(context, run.machine) && !run.package.draftingFolder.empty();
  FillTree(run, tree);
  BuildStagingLocalFolder(context, context.selectedVersion);

  if (known && (!IsOtherRelease(run) || HasTargetFolders(run))) return true;
  run.view.ShowMessage(std::wstring(Text(StringId::kFoldersMissing)));
  return false;
}

}  // namespace carrovan
