#pragma once

#include <string>
#include <vector>

#include "platform/file_system.h"
#include "platform/line_log.h"
#include "platform/xml_dom.h"

namespace carrovan {

struct FolderMergePorts {
  FileSystem& files;
  XmlDom& dom;
  LineLog& log;
  std::vector<std::wstring>* merged = nullptr;  // gets the names of the merged files
};

// Brings the XML files of an old folder up to date with a new folder: files of both are merged,
// files of the new one are added, and files of the old one stay and are also written to the new
// one. Subfolders and other files are left alone. The old folder's XML files are first copied to
// the folder named after it with "_backup"; "_merged_temp" holds the result until it is complete.
// The log tells every step in fixed words. True when a file was merged or added. Throws
// FileSystemError when a file operation fails; everything stays as it is at that point.
bool MergeAndSyncFolders(const std::wstring& oldFolder, const std::wstring& newFolder,
                         const FolderMergePorts& ports);

}  // namespace carrovan
