#include "package/package_opening.h"

#include "package/staging_folder.h"
#include "text/path_text.h"
#include "text/text.h"

namespace carrovan {
namespace {

void CreateFolderOf(FileSystem& files, const std::wstring& target) {
  const std::size_t separator = target.rfind(L'\\');
  if (separator == std::wstring::npos) return;
  // Usually it is there already; if it cannot be made, the item itself fails.
  static_cast<void>(files.CreateFolder(target.substr(0, separator)));
}

using Refusal = std::optional<std::wstring> (*)(std::wstring_view name);

bool ExtractItem(ArchiveReader& archive, FileSystem& files, std::size_t index,
                 const std::wstring& target) {
  CreateFolderOf(files, target);
  return archive.Extract(index, target) == ArchiveResult::kDone;
}

std::vector<std::wstring> TargetsOf(const ArchiveReader& archive,
                                    const std::wstring& destinationFolder, Refusal refusalOf) {
  std::vector<std::wstring> targets;
  for (std::size_t index = 0;; ++index) {
    const auto item = archive.Item(index);
    if (!item) return targets;
    if (!refusalOf(item->name)) targets.push_back(destinationFolder + item->name);
  }
}

ExtractReport ExtractItems(ArchiveLibrary& archives, FileSystem& files, RunObserver& observer,
                           const std::wstring& archivePath, const std::wstring& destinationFolder,
                           Refusal refusalOf) {
  ExtractReport report;
  const auto archive = archives.Open(archivePath);
  if (!archive) return report;
  report.opened = true;
  files.Announce(TargetsOf(*archive, destinationFolder, refusalOf), ComingChange::kReplacement);
  for (std::size_t index = 0;; ++index) {
    const auto item = archive->Item(index);
    if (!item) return report;
    const std::wstring target = destinationFolder + item->name;
    observer.OnItem(target);
    if (!refusalOf(item->name) && ExtractItem(*archive, files, index, target)) {
      report.extracted.push_back(target);
    } else {
      report.failed.push_back(target);
    }
  }
}

bool IsKeptByRuns(std::wstring_view name) {
  const std::wstring archive = kChangedFilesArchive;
  for (const std::wstring& own : {archive, archive + L".part", std::wstring(kRunFolderMark)}) {
    if (CompareNames(name, own) == 0) return true;
  }
  return false;
}

}  // namespace

std::optional<std::wstring> RefusalOfPackageItem(std::wstring_view name) {
  if (auto refusal = RefusalOfStoredName(name)) return refusal;
  if (!IsKeptByRuns(name.substr(0, name.find_first_of(L"\\/")))) return std::nullopt;
  return L"is one that an import keeps for itself";
}

ExtractReport ExtractArchive(ArchiveLibrary& archives, FileSystem& files, RunObserver& observer,
                             const std::wstring& archivePath,
                             const std::wstring& destinationFolder) {
  return ExtractItems(archives, files, observer, archivePath, destinationFolder,
                      RefusalOfStoredName);
}

ExtractReport UnpackPackage(const Machine& machine, RunObserver& observer,
                            const std::wstring& packagePath, const std::wstring& stagingFolder) {
  return ExtractItems(*machine.archives, *machine.files, observer, packagePath, stagingFolder,
                      RefusalOfPackageItem);
}

}  // namespace carrovan
