#pragma once

#include <map>
#include <string>

#include "platform/file_operations.h"
#include "platform/file_system.h"
#include "text/text.h"

namespace carrovan {

// What lies at many paths. Each folder is listed once, which costs far less than a look at every
// file in it; what changes after that is not seen.
class ListedKinds {
 public:
  // The files outlive it.
  explicit ListedKinds(const FileReader& files) : files_(files) {}

  FileKind At(const std::wstring& path);

 private:
  struct Folder {
    bool isKnown = false;  // it could be listed, or is not there
    std::map<std::wstring, FileKind, NameLess> kinds;
  };

  const Folder& List(const std::wstring& folder);

  const FileReader& files_;
  std::map<std::wstring, Folder, NameLess> folders_;
};

// What an entry is.
FileKind KindOf(const FolderEntry& entry);

}  // namespace carrovan
