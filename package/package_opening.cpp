#include "package/package_opening.h"

#include "platform/stored_name.h"

namespace carrovan {
namespace {

void CreateFolderOf(FileSystem& files, const std::wstring& target) {
  const std::size_t separator = target.rfind(L'\\');
  if (separator == std::wstring::npos) return;
  // Usually it is there already; if it cannot be made, the item itself fails.
  static_cast<void>(files.CreateFolder(target.substr(0, separator)));
}

bool ExtractItem(ArchiveReader& archive, FileSystem& files, std::size_t index,
                 const ArchiveItem& item, const std::wstring& target) {
  if (RefusalOfStoredName(item.name)) return false;
  CreateFolderOf(files, target);
  return archive.Extract(index, target) == ArchiveResult::kDone;
}

}  // namespace

ExtractReport ExtractArchive(ArchiveLibrary& archives, FileSystem& files, WizardView& view,
                             const std::wstring& archivePath,
                             const std::wstring& destinationFolder) {
  ExtractReport report;
  const auto archive = archives.Open(archivePath);
  if (!archive) return report;
  report.opened = true;
  for (std::size_t index = 0;; ++index) {
    const auto item = archive->Item(index);
    if (!item) return report;
    const std::wstring target = destinationFolder + item->name;
    if (ExtractItem(*archive, files, index, *item, target)) {
      ++report.extracted;
    } else {
      ++report.failed;
      view.ShowMessage(L"Failed to extract file: " + target);
    }
  }
}

}  // namespace carrovan
