#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "package/run_report.h"
#include "platform/machine.h"

namespace carrovan {

// The archive of the last steps of an import, in the staging folder. It is written there as
// ".part".
inline constexpr wchar_t kChangedFilesArchive[] = L"Version_Changed_Files.zip";

// Why an item of a package is not unpacked into a staging folder ("leads out of the folder"): its
// name is unfit or longer than any file's can be, or the run keeps something of its own there.
// Nothing for one that is.
std::optional<std::wstring> RefusalOfPackageItem(std::wstring_view name);

// The same for an item, whose name may also be longer than this system can make, though Windows
// can.
std::optional<std::wstring> RefusalOfPackageItem(ArchiveExaminer& archive, std::size_t index,
                                                 const std::wstring& name);

// How an extraction went.
struct ExtractReport {
  bool opened = false;                  // false: the archive is missing or is not one
  std::vector<std::wstring> extracted;  // paths of what was written
  std::vector<std::wstring> failed;  // where the items that failed or were refused were to be put
};

// Unpacks every item of an archive below a folder whose path ends in a separator. Items that fail
// or are refused do not stop the others, and leave no folder that was made for them. Nothing is
// written outside the folder.
ExtractReport ExtractArchive(ArchiveLibrary& archives, FileSystem& files, RunObserver& observer,
                             const std::wstring& archivePath,
                             const std::wstring& destinationFolder);

// The same for a package and a staging folder, in which items do not lie where the run keeps its
// own.
ExtractReport UnpackPackage(const Machine& machine, RunObserver& observer,
                            const std::wstring& packagePath, const std::wstring& stagingFolder);

}  // namespace carrovan
