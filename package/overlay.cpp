#include "package/overlay.h"

#include "package/package_description.h"
#include "package/package_opening.h"
#include "package/package_writer.h"
#include "package/staging_folder.h"
#include "platform/command_interpreter.h"
#include "text/path_text.h"

namespace carrovan {
namespace {

// Whether the archive is the one that was just written, and whether everything is in it.
struct OverlayArchive {
  bool written = false;
  bool complete = false;
};

// The archive exists between two steps only, so that laying over overwrites exactly as the
// unpacking of a package does. What a package may have put at its names goes first.
OverlayArchive ArchiveChangedFiles(const Overlay& overlay, const std::wstring& archive,
                                   ImportReport& report) {
  for (const std::wstring& path : {archive, archive + L".part"}) {
    if (ClearPath(overlay.machine.files, path)) continue;
    report.problems.push_back(L"Not written: " + archive + L": " + path + L" cannot be removed");
    return {};
  }
  std::vector<std::wstring> sources;
  for (const wchar_t* half : {L"Local", L"Roaming"}) {
    const std::wstring folder = overlay.context.stagingFolder + half;
    // A file of that name would be stored elsewhere, and laid over there.
    if (overlay.machine.files.IsFolder(folder)) sources.push_back(folder);
  }
  const PackageReport package = WritePackage(overlay.context, overlay.machine, sources, archive,
                                             ArchivePurpose::kUnpackAtOnce);
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

void KeepStagingFolder(const Overlay& overlay, ImportReport& report) {
  ProductContext& context = overlay.context;
  report.problems.push_back(L"What is not in place is kept in " + context.stagingFolder);
  KeepRunFolder(overlay.machine.files, WithoutTrailingBackslashes(context.stagingFolder));
  // A folder that is the context's is deleted in the end.
  context.stagingFolder.clear();
  CreateStagingFolder(context, overlay.machine);
  context.packageDescriptionPath = context.stagingFolder + kPackageDescriptionName;
}

}  // namespace

void ImportRegistryFolder(const std::wstring& folder, const FileReader& files, RegistryTool& tool,
                          ImportReport& report) {
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

bool LayOverProfile(const Overlay& overlay, ImportReport& report) {
  if (overlay.applicationDataRoot.empty()) {
    report.problems.push_back(L"The user's application-data folder cannot be told");
    return false;
  }
  const std::wstring archive = overlay.context.stagingFolder + kOverlayArchive;
  const OverlayArchive archived = ArchiveChangedFiles(overlay, archive, report);
  if (!archived.written) return false;
  const ExtractReport extracted =
      ExtractArchive(overlay.machine.archives, overlay.machine.files, overlay.view, archive,
                     overlay.applicationDataRoot);
  report.unextracted += extracted.failed;
  return archived.complete && extracted.opened && extracted.failed == 0;
}

void ApplyOverlay(const Overlay& overlay, ImportReport& report) {
  // Relative names would be looked for in the folder that the program happens to run in.
  if (overlay.context.stagingFolder.empty()) return;
  for (const wchar_t* folder : {L"Options", L"Register"}) {
    ImportRegistryFolder(overlay.context.stagingFolder + folder, overlay.machine.files,
                         overlay.registryTool, report);
  }
  overlay.registryTool.PauseAfterImports();
  if (LayOverProfile(overlay, report)) {
    DeleteStagingFolder(overlay.context, overlay.machine);
  } else {
    KeepStagingFolder(overlay, report);
  }
}

}  // namespace carrovan
