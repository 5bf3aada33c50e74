#include "package/package_selection.h"

#include "package/package_inspection.h"
#include "package/package_opening.h"
#include "package/staging_folder.h"
#include "platform/text.h"
#include "rewrite/legacy_version.h"

namespace carrovan {
namespace {

OpenFileQuestion PackageQuestion() {
  return {.defaultExtension = L".ucex",
          .filter = L"User Configuration Files (*.ucx; *.ucex)|*.ucx;*.ucex||"};
}

void TakeSelectedVersion(const PackageSelection& selection) {
  if (const auto version = selection.page.SelectedVersion()) {
    SelectTargetVersion(selection.state, selection.run.context, *version);
  }
}

}  // namespace

std::wstring FindSingleXml(const FileReader& files, const std::wstring& folder) {
  std::wstring found;
  for (const FolderEntry& entry : files.ListFolder(folder)) {
    if (entry.isFolder || !EndsWithIgnoringAsciiCase(entry.name, L".xml")) continue;
    if (!found.empty()) return {};
    found = folder + entry.name;
  }
  return found;
}

std::optional<std::wstring> OpenLegacyPackage(const ImportRun& run, const std::wstring& path) {
  PackageState& package = run.package;
  run.report = {};
  // What an earlier package left, in the folder or of its names, would be taken for this one's.
  package.company = run.context.companyShortName;
  package.product = run.context.productName;
  if (!RenewStagingFolder(run.context, run.machine)) {
    run.view.ShowMessage(L"No folder can be made in the temporary path");
    return std::nullopt;
  }
  run.report.unextracted +=
      UnpackPackage(run.machine, run.view, path, run.context.stagingFolder).failed;
  package.legacyXmlPath = FindSingleXml(run.machine.files, run.context.stagingFolder);
  if (package.legacyXmlPath.empty()) {
    run.view.ShowMessage(L"File corruption");
    return std::nullopt;
  }
  std::wstring targetText = ReadLegacyTargetVersion(package.legacyXmlPath, run.dom);
  if (!targetText.empty()) return targetText;
  // A document that cannot be written stays as it is and is imported so.
  static_cast<void>(RetargetLegacyVersion(
      package.legacyXmlPath, ReplaceAll(package.product, L" ", L""), package.targetInternalVersion,
      run.machine.files, run.machine.codePage));
  return package.defaultTargetText;
}

void SelectPackage(const PackageSelection& selection) {
  PackageState& package = selection.state.package;
  package.legacy = false;
  const auto path = selection.page.ChooseOpenFile(PackageQuestion());
  if (!path) return TakeSelectedVersion(selection);
  if (path->empty()) return;

  package.legacy = IsLegacyPackageName(*path);
  std::vector<std::wstring> versions;
  if (package.legacy) {
    const auto targetText = OpenLegacyPackage(selection.run, *path);
    // Going on with the package that was chosen before would import something else than what the
    // user asked for last.
    if (!targetText) return package.path.clear();
    versions = {*targetText};
  } else {
    versions = ListInstalledYears(selection.run.context);
  }
  package.path = *path;
  selection.page.ShowPackagePath(*path);
  selection.page.ListVersions(versions);
  TakeSelectedVersion(selection);
}

}  // namespace carrovan
