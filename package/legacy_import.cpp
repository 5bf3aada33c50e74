#include "package/legacy_import.h"

#include "environment/version_folders.h"
#include "package/package_description.h"
#include "package/package_opening.h"
#include "package/staging_folder.h"
#include "registry_text/registry_key.h"
#include "rewrite/option_migration.h"
#include "rewrite/xml_rewrite.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

// The document goes to both languages that the product has always had.
constexpr const wchar_t* kLegacyLanguages[] = {L"zh-CN", L"en-us"};

SystemCode CopyIntoFolder(FileSystem& files, const std::wstring& source, const std::wstring& folder,
                          const std::wstring& name) {
  if (!files.Exists(source)) return kFileNotFound;
  if (!files.Exists(folder)) {
    if (const SystemCode code = files.CreateFolder(folder); code != kSystemOk) return code;
  }
  const std::wstring target = WithTrailingBackslash(folder) + name;
  if (const SystemCode code = files.CopyOver(source, target); code != kSystemOk) return code;
  // The source goes with the staging folder.
  return files.Flush(std::vector<std::wstring>{target, folder, RemoveFileSpec(folder)});
}

void PlaceCustomization(const ImportRun& run, const std::wstring& suffix) {
  const std::wstring name = run.package.product + suffix;
  for (const wchar_t* language : kLegacyLanguages) {
    const std::wstring folder = run.context.roamingRoot + L"\\" + language + L"\\Customization";
    const SystemCode code =
        CopyIntoFolder(*run.machine.files, run.package.legacyXmlPath, folder, name);
    if (code != kSystemOk) {
      run.report.problems.push_back(L"Not put in place: " + folder + L"\\" + name + L": " +
                                    DescribeSystemCode(code));
    }
  }
}

void MigrateOptions(const ImportRun& run) {
  const PackageState& package = run.package;
  RewritePorts ports = RewritePortsOf(run);
  if (run.paths != nullptr) ports.stay = run.paths->WordsThatStay({});
  if (const SystemCode code = ReplaceUserPathsInXml(package.legacyXmlPath, ports);
      code != kSystemOk) {
    run.report.problems.push_back(L"Not mended: " + package.legacyXmlPath + L": " +
                                  DescribeSystemCode(code));
  }
  const OptionMigration migration =
      MigrateOptionConfig(package.legacyXmlPath, package.company,
                          package.product + L" " + package.targetInternalVersion, run.dom,
                          *run.machine.registry, run.log);
  run.report.optionsSet = migration.written;
  if (!migration.started) {
    run.report.problems.push_back(L"No option was imported: " + package.legacyXmlPath);
  } else if (migration.written == 0 && migration.failedKeys.empty()) {
    run.report.problems.push_back(L"No option was imported: the version has no value that " +
                                  FileNameOf(package.legacyXmlPath) + L" could set");
  }
  for (const PassedOption& passed : migration.passed) {
    run.report.dropped.push_back({FileNameOf(package.legacyXmlPath),
                                  FullKeyPath(RegistryHive::kCurrentUser, passed.key), passed.name,
                                  passed.why});
  }
  for (const std::wstring& key : migration.failedKeys) {
    run.report.problems.push_back(L"Not every value could be set: " + key);
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
      *run.machine.files, *run.machine.codePage));
  return package.defaultTargetText;
}

}  // namespace

std::wstring FindSingleXml(const FileReader& files, const std::wstring& folder) {
  std::wstring found;
  for (const FolderEntry& entry : ListFolder(files, folder)) {
    if (!IsContentFile(entry) || !EndsWithIgnoringAsciiCase(entry.name, L".xml")) continue;
    if (!found.empty()) return {};
    found = folder + entry.name;
  }
  return found;
}

LegacyOpening OpenLegacyPackage(const ImportRun& run, const std::wstring& path) {
  ProductContext& context = run.context;
  LegacyOpening opening;
  const std::wstring former = context.stagingFolder;
  if (!CreateStagingFolder(context, run.machine)) {
    opening.refusal = RunRefusal::kNoStagingFolder;
    return opening;
  }
  const std::wstring fresh = context.stagingFolder;
  opening.unextracted = UnpackPackage(run.machine, run.observer, path, fresh).failed;
  const std::wstring document = FindSingleXml(*run.machine.files, fresh);
  if (document.empty()) {
    GoOnIn(former, run);
    opening.refusal = RunRefusal::kCorruptPackage;
    return opening;
  }
  context.stagingFolder = former;
  GoOnIn(fresh, run);
  context.packageDescriptionPath = fresh + kPackageDescriptionName;
  run.report = {};
  run.report.unextracted = opening.unextracted;
  run.package.path = path;
  run.package.legacyXmlPath = document;
  // The names of a package that was opened before would be taken for this one's.
  run.package.company = context.companyShortName;
  run.package.product = context.productName;
  opening.targetText = TargetTextOf(run);
  return opening;
}

void ImportLegacyCustomization(const ImportRun& run) {
  const std::wstring& document = run.package.legacyXmlPath;
  if (run.paths != nullptr) run.paths->MapFile(document, run.report);
  if (!PrepareVersionFolders(run.context, run.machine)) {
    run.report.problems.push_back(L"The folders of version " + run.context.selectedVersion +
                                  L" cannot be told");
  } else if (Contains(document, L"ERROR_UI.xml")) {
    PlaceCustomization(run, L"-PartTemplate.xml");
  } else if (Contains(document, L"Scene_UI.xml")) {
    PlaceCustomization(run, L"-Scene.xml");
  } else if (Contains(document, L"VANTRIC_Option_Config.xml")) {
    MigrateOptions(run);
  } else {
    run.report.problems.push_back(L"Not imported: this kind of document has no place: " + document);
  }
  if (run.paths != nullptr) {
    run.paths->ReportBelow(run.context.stagingFolder, nullptr, run.report);
  }
  DeleteStagingFolder(run.context, run.machine);
}

}  // namespace carrovan
