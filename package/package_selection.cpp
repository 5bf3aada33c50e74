#include "package/package_selection.h"

#include "package/package_description.h"
#include "package/package_inspection.h"
#include "package/package_opening.h"
#include "package/staging_folder.h"
#include "rewrite/xml_rewrite.h"
#include "text/text.h"

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

// Deletes the staging folder in use and goes on with another one.
void GoOnIn(const std::wstring& folder, const ImportRun& run) {
  DeleteStagingFolder(run.context, run.machine);
  run.context.stagingFolder = folder;
}

// The text for the version list. A document that names no version is made to name the target's.
std::wstring TargetTextOf(const ImportRun& run) {
  const PackageState& package = run.package;
  std::wstring targetText = ReadLegacyTargetVersion(package.legacyXmlPath, run.dom);
  if (!targetText.empty()) return targetText;
  // A document that cannot be written stays as it is and is imported so.
  static_cast<void>(RetargetLegacyVersion(
      package.legacyXmlPath, ReplaceAll(package.product, L" ", L""), package.targetInternalVersion,
      run.machine.files, run.machine.codePage));
  return package.defaultTargetText;
}

}  // namespace

std::wstring FindSingleXml(const FileReader& files, const std::wstring& folder) {
  std::wstring found;
  for (const FolderEntry& entry : files.ListFolder(folder)) {
    if (!IsContentFile(entry) || !EndsWithIgnoringAsciiCase(entry.name, L".xml")) continue;
    if (!found.empty()) return {};
    found = folder + entry.name;
  }
  return found;
}

std::optional<std::wstring> OpenLegacyPackage(const ImportRun& run, const std::wstring& path) {
  ProductContext& context = run.context;
  const std::wstring former = context.stagingFolder;
  if (!CreateStagingFolder(context, run.machine)) {
    run.view.ShowMessage(L"No folder can be made in the temporary path");
    return std::nullopt;
  }
  const std::wstring fresh = context.stagingFolder;
  const ExtractReport extracted = UnpackPackage(run.machine, run.view, path, fresh);
  const std::wstring document = FindSingleXml(run.machine.files, fresh);
  if (document.empty()) {
    GoOnIn(former, run);
    run.view.ShowMessage(L"File corruption");
    return std::nullopt;
  }
  context.stagingFolder = former;
  GoOnIn(fresh, run);
  context.packageDescriptionPath = fresh + kPackageDescriptionName;
  run.report = {};
  run.report.unextracted = extracted.failed;
  run.package.legacyXmlPath = document;
  // The names of a package that was opened before would be taken for this one's.
  run.package.company = context.companyShortName;
  run.package.product = context.productName;
  return TargetTextOf(run);
}

void SelectPackage(const PackageSelection& selection) {
  const auto path = selection.page.ChooseOpenFile(PackageQuestion());
  if (!path) return TakeSelectedVersion(selection);
  if (path->empty()) return;

  std::vector<std::wstring> versions;
  if (IsLegacyPackageName(*path)) {
    const auto targetText = OpenLegacyPackage(selection.run, *path);
    if (!targetText) return;
    versions = {*targetText};
  } else {
    versions = ListInstalledYears(selection.run.context);
  }
  selection.state.package.path = *path;
  selection.page.ShowPackagePath(*path);
  selection.page.ListVersions(versions);
  TakeSelectedVersion(selection);
}

}  // namespace carrovan
