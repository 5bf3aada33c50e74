#pragma once

#include <cstddef>
#include <string>

#include "platform/archive_library.h"
#include "platform/file_system.h"
#include "platform/wizard_view.h"

namespace carrovan {

// How an extraction went. The wizard does not look at it.
struct ExtractReport {
  bool opened = false;  // false: the archive is missing or is not one
  std::size_t extracted = 0;
  std::size_t failed = 0;
};

// Unpacks every item of an archive below a folder whose path ends in a separator. The view is shown
// one message for each item that fails or is refused, with the item's target path; the others are
// unpacked all the same. Nothing is written outside the folder.
ExtractReport ExtractArchive(ArchiveLibrary& archives, FileSystem& files, WizardView& view,
                             const std::wstring& archivePath,
                             const std::wstring& destinationFolder);

}  // namespace carrovan
