#include "package/overlay.h"

#include "package/package_description.h"
#include "package/package_opening.h"
#include "package/package_writer.h"
#include "package/staging_folder.h"

namespace carrovan {
namespace {

// The archive exists between two steps only, so that laying over overwrites exactly as the
// unpacking of a package does.
constexpr wchar_t kOverlayArchive[] = L"Version_Changed_Files.zip";

bool ArchiveChangedFiles(const Overlay& overlay, const std::wstring& archive,
                         ImportReport& report) {
  const std::wstring& staging = overlay.context.stagingFolder;
  const std::wstring sources[] = {staging + L"Local", staging + L"Roaming"};
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
  return package.outcome == ArchiveResult::kDone && package.skipped.empty();
}

void KeepStagingFolder(const Overlay& overlay, ImportReport& report) {
  ProductContext& context = overlay.context;
  report.problems.push_back(L"What is not in place is kept in " + context.stagingFolder);
  CreateStagingFolder(context, overlay.machine);
  context.packageDescriptionPath = context.stagingFolder + kPackageDescriptionName;
}

}  // namespace

void ImportRegistryFolder(const std::wstring& folder, const FileReader& files, RegistryTool& tool) {
  for (const FolderEntry& entry : files.ListFolder(folder)) {
    if (!entry.isFolder) tool.RegImportFile(folder + L"\\" + entry.name);
  }
}

bool LayOverProfile(const Overlay& overlay, ImportReport& report) {
  const std::wstring archive = overlay.context.stagingFolder + kOverlayArchive;
  const bool archived = ArchiveChangedFiles(overlay, archive, report);
  const ExtractReport extracted =
      ExtractArchive(overlay.machine.archives, overlay.machine.files, overlay.view, archive,
                     overlay.applicationDataRoot);
  report.unextracted += extracted.failed;
  return archived && extracted.opened && extracted.failed == 0;
}

void ApplyOverlay(const Overlay& overlay, ImportReport& report) {
  for (const wchar_t* folder : {L"Options", L"Register"}) {
    ImportRegistryFolder(overlay.context.stagingFolder + folder, overlay.machine.files,
                         overlay.registryTool);
  }
  overlay.registryTool.PauseAfterImports();
  if (LayOverProfile(overlay, report)) {
    DeleteStagingFolder(overlay.context, overlay.machine);
  } else {
    KeepStagingFolder(overlay, report);
  }
}

}  // namespace carrovan
