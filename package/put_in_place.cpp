#include "package/put_in_place.h"

#include <algorithm>
#include <iterator>
#include <set>

#include "package/package_description.h"
#include "package/package_opening.h"
#include "package/package_writer.h"
#include "package/staging_folder.h"
#include "platform/registry_tool.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

// Whether the archive is the one that was just written, and whether everything is in it.
struct ChangedFiles {
  bool written = false;
  bool complete = false;
};

// The archive exists between two steps only, so that laying over overwrites exactly as the
// unpacking of a package does. What a package may have put at its names goes first.
ChangedFiles ArchiveChangedFiles(const Placement& placement, const std::wstring& archive,
                                 RunReport& report) {
  for (const std::wstring& path : {archive, archive + L".part"}) {
    if (ClearPath(*placement.machine.files, path)) continue;
    report.problems.push_back(L"Not written: " + archive + L": " + path + L" cannot be removed");
    return {};
  }
  std::vector<std::wstring> sources;
  for (const wchar_t* half : {L"Local", L"Roaming"}) {
    const std::wstring folder = placement.context.stagingFolder + half;
    // A file of that name would be stored elsewhere, and laid over there.
    if (placement.machine.files->IsFolder(folder)) sources.push_back(folder);
  }
  const PackageReport package = WritePackage(placement.context, placement.machine, sources, archive,
                                             ArchivePurpose::kUnpackAtOnce, placement.observer);
  if (package.outcome != ArchiveResult::kDone) {
    report.problems.push_back(L"Not written: " + archive + L": " +
                              DescribeArchiveResult(package.outcome));
  }
  for (const SkippedItem& item : package.skipped) {
    report.problems.push_back(L"Not put in place: " + item.path + L": " +
                              DescribeArchiveResult(item.reason));
  }
  const bool written = package.outcome == ArchiveResult::kDone;
  return {written, written && package.skipped.empty()};
}

// The staging folder goes when this has succeeded, and a loss of power must not find what lay in it
// nowhere.
bool FlushPlaced(const Placement& placement, const std::vector<std::wstring>& files,
                 RunReport& report) {
  std::set<std::wstring, NameLess> paths(files.begin(), files.end());
  for (const std::wstring& file : files) {
    // Any of the folders may be as new as the file.
    std::wstring folder = RemoveFileSpec(file);
    while (folder.size() > placement.applicationDataRoot.size() && paths.insert(folder).second) {
      folder = RemoveFileSpec(folder);
    }
    paths.insert(folder);
  }
  const SystemCode code =
      placement.machine.files->Flush(std::vector<std::wstring>(paths.begin(), paths.end()));
  if (code == kSystemOk) return true;
  report.problems.push_back(L"What was put in place may not be on the disk yet: " +
                            DescribeSystemCode(code));
  return false;
}

void KeepStagingFolder(const Placement& placement, RunReport& report) {
  ProductContext& context = placement.context;
  report.problems.push_back(L"What is not in place is kept in " + context.stagingFolder);
  KeepRunFolder(*placement.machine.files, WithoutTrailingBackslashes(context.stagingFolder));
  // A folder that is the context's is deleted in the end.
  context.stagingFolder.clear();
  CreateStagingFolder(context, placement.machine);
  context.packageDescriptionPath = context.stagingFolder + kPackageDescriptionName;
}

}  // namespace

void ImportRegistryFolder(const std::wstring& folder, const FileReader& files,
                          PacedRegistryTool& tool, RunReport& report) {
  if (!files.IsFolder(folder)) return;
  std::vector<FolderEntry> entries;
  if (const SystemCode code = files.ReadFolder(folder, entries); code != kSystemOk) {
    report.problems.push_back(L"Not imported into the registry: " + folder + L": " +
                              DescribeSystemCode(code));
  }
  for (const FolderEntry& entry : entries) {
    if (!IsContentFile(entry)) continue;
    const std::wstring file = folder + L"\\" + entry.name;
    if (!IsPlainToInterpreter(entry.name)) {
      report.problems.push_back(L"Not imported into the registry: " + file +
                                L": its name holds a percent sign or a quote");
      continue;
    }
    if (!tool.RegImportFile(file)) {
      report.problems.push_back(L"Not imported into the registry: " + file);
    }
  }
}

bool LayOverProfile(const Placement& placement, RunReport& report) {
  if (placement.applicationDataRoot.empty()) {
    report.problems.push_back(L"The user's application-data folder cannot be told");
    return false;
  }
  const std::wstring archive = placement.context.stagingFolder + kChangedFilesArchive;
  const ChangedFiles archived = ArchiveChangedFiles(placement, archive, report);
  if (!archived.written) return false;
  const ExtractReport extracted =
      ExtractArchive(*placement.machine.archives, *placement.machine.files, placement.observer,
                     archive, placement.applicationDataRoot);
  std::ranges::copy(extracted.failed, std::back_inserter(report.unextracted));
  return FlushPlaced(placement, extracted.extracted, report) && archived.complete &&
         extracted.opened && extracted.failed.empty();
}

void PutInPlace(const Placement& placement, RunReport& report) {
  // Relative names would be looked for in the folder that the program happens to run in.
  if (placement.context.stagingFolder.empty()) return;
  for (const wchar_t* folder : {L"Options", L"Register"}) {
    ImportRegistryFolder(placement.context.stagingFolder + folder, *placement.machine.files,
                         placement.registryTool, report);
  }
  placement.registryTool.PauseAfterImports();
  if (LayOverProfile(placement, report)) {
    DeleteStagingFolder(placement.context, placement.machine);
  } else {
    KeepStagingFolder(placement, report);
  }
}

}  // namespace carrovan
